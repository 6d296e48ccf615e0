// SPDX-License-Identifier: MIT
// What the machines of the tools that change devices have in common: devices in batches, one batch
// at a time; no batch begins after a halt; the time of devices stands still while the controller is
// silent; and what the program gives up is unknown.
#pragma once

#include "course/driver.h"
#include "util/mac.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

// A device has `mac`, `batch` (counted from 1; 0 when it is in none), `stage`, whose values have
// one `unknown`, `reason`, `ended`, and finished().
template <class Device> class BatchMachine {
public:
    using Stage = decltype(Device::stage);

    // Is told of each device whose stage has changed.
    struct Listener {
        virtual void changed(const Device &device) = 0;

    protected:
        ~Listener() = default;
    };

    const std::vector<Device> &devices() const { return devices_; }
    size_t batches() const { return batches_; }
    size_t batch() const { return batch_; } // the present one, 0 before the first
    Halt halted() const { return halted_; }
    double lost_time() const { return clock_.lost(); } // of the service clock

    const Device *find(const Mac &mac) const
    {
        const auto found = by_mac_.find(mac);
        return found == by_mac_.end() ? nullptr : &devices_[found->second];
    }

    size_t count(Stage stage) const
    {
        return static_cast<size_t>(
            std::count_if(devices_.begin(), devices_.end(),
                          [=](const Device &device) { return device.stage == stage; }));
    }

    // Whether the batch has not ended.
    bool is_running() const
    {
        return std::any_of(devices_.begin(), devices_.end(),
                           [this](const Device &device) { return runs(device); });
    }

    void halt(Halt why)
    {
        if (halted_ != Halt::none)
            return;
        halted_ = why;
        settle_batch();
    }

    // A look that began at `since` had no answer.
    void silent(double since, double now)
    {
        now_ = now;
        clock_.silent(since);
        if (clock_.silence(now) < outage_)
            return;
        halt(Halt::silence);
        abandon(now, "the controller did not answer");
    }

    void abandon(double now, const std::string &reason)
    {
        now_ = now;
        halt(Halt::signal);
        for (Device &device : devices_)
            if (batch_ > 0 && runs(device))
                end(device, Stage::unknown, reason);
    }

    // Percent of the batch's work, and of all.
    unsigned batch_progress() const { return progress(batch_, batch_); }
    unsigned whole_progress() const { return progress(1, batches_); }

protected:
    BatchMachine(std::vector<Device> devices, double outage, Listener &listener)
        : devices_(std::move(devices)), outage_(outage), listener_(listener)
    {
        for (size_t i = 0; i < devices_.size(); i++) {
            by_mac_[devices_[i].mac] = i;
            batches_ = std::max(batches_, devices_[i].batch);
        }
    }
    BatchMachine(const BatchMachine &) = default;
    ~BatchMachine() = default;

    virtual void settle_batch() = 0; // leaves out what may not begin any more
    virtual void end(Device &device, Stage stage, const std::string &reason) = 0;
    virtual unsigned percent(const Device &device) const = 0; // of a device that has not ended

    bool may_begin() const { return halted_ == Halt::none; }
    bool runs(const Device &device) const { return device.batch == batch_ && !device.finished(); }

    // A device by its address, which is one of the machine's.
    Device &at(const Mac &mac) { return devices_[by_mac_.at(mac)]; }

    bool next_batch(double now)
    {
        if (batch_ == batches_ || !may_begin())
            return false;
        batch_++;
        now_ = now;
        clock_.answered(now);
        return true;
    }

    void enter(Device &device, Stage stage)
    {
        device.stage = stage;
        listener_.changed(device);
    }

    std::vector<Device> devices_;
    std::map<Mac, size_t> by_mac_;
    ServiceClock clock_;
    double now_ = 0; // of the event that is worked on

private:
    unsigned progress(size_t first, size_t last) const
    {
        size_t count = 0, sum = 0;
        for (const Device &device : devices_) {
            if (device.batch < first || device.batch > last)
                continue;
            count++;
            sum += device.finished() ? 100 : percent(device);
        }
        return count == 0 ? 100 : static_cast<unsigned>(sum / count);
    }

    double outage_;
    Listener &listener_;
    size_t batches_ = 0, batch_ = 0;
    Halt halted_ = Halt::none;
};
