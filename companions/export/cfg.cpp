// SPDX-License-Identifier: MIT
// The stored configurations as documents that zov cfg --file takes.
#include "common/output_file.h"
#include "documents/settings_tree.h"
#include "export/cfg_writer.h"
#include "export/directory_output.h"
#include "export/formats.h"
#include "export/json_text.h"

#include <algorithm>
#include <cstdio>
#include <map>

enum : int { INDENTATION = 2 };

namespace {

// What documents lack, each with the devices that lack it.
class Losses {
public:
    void add(const std::string &what, const Mac &mac)
    {
        Loss &loss = losses_[what];
        if (loss.devices == 0)
            loss.first = mac;
        if (loss.devices == 0 || loss.last != mac)
            loss.devices++;
        loss.last = mac;
    }

    [[nodiscard]] bool empty() const { return losses_.empty(); }

    void report() const
    {
        for (const auto &[what, loss] : losses_)
            fprintf(stderr, "zov-export: %s (devices: %u, first %s)\n", what.c_str(), loss.devices,
                    mac_name(loss.first).c_str());
    }

private:
    struct Loss {
        unsigned devices = 0;
        Mac first, last;
    };
    std::map<std::string, Loss> losses_;
};

class Documents {
public:
    // The document of a device; empty when it has none.
    std::string make(const WtpRecord &wtp)
    {
        const bool is_switch = wtp.wtp_type == DEVICE_SWITCH;
        if (wtp.wtp_cfg == nullptr || (!is_switch && wtp.wtp_type != DEVICE_ACCESS_POINT))
            return "";
        CfgWriter &writer = is_switch ? of_switches_ : of_access_points_;
        CfgWriter::Json settings = writer.write(*wtp.wtp_cfg);
        for (const std::string &setting : writer.left_out())
            losses_.add(setting, wtp.mac);
        if (settings.is_null()) {
            losses_.add("nothing of the configuration can be sent", wtp.mac);
            return "";
        }
        made_++;
        const DeviceKind kind = is_switch ? DEVICE_SWITCH : DEVICE_ACCESS_POINT;
        CfgWriter::Json document = {{"comment", mac_name(wtp.mac) + sending_hint(kind)}};
        document["wtp_cfg"] = std::move(settings);
        return escape_controls(document.dump(INDENTATION)) + "\n";
    }

    // To be called at the end: reports what the documents lack; false if there is anything.
    bool finish() const
    {
        losses_.report();
        if (made_ == 0)
            throw Failure("there is no configuration to write");
        return losses_.empty();
    }

private:
    CfgWriter of_access_points_{DEVICE_ACCESS_POINT};
    CfgWriter of_switches_{DEVICE_SWITCH};
    Losses losses_;
    unsigned made_ = 0;
};

} // namespace

// "02-A3-00-00-00-01.json"
static std::string file_name(const Mac &mac)
{
    std::string name = mac_name(mac);
    std::replace(name.begin(), name.end(), ':', '-');
    return name + ".json";
}

// A file that could not be written is a loss that --partial does not accept.
static bool write_files(Devices &devices, const ExportSettings &settings, Documents &documents)
{
    DirectoryOutput directory(settings.directory);
    devices.for_each([&](const WtpRecord &wtp) {
        if (devices.is_repeated(wtp.mac))
            return;
        const std::string document = documents.make(wtp);
        if (!document.empty())
            directory.add(file_name(wtp.mac), document);
    });
    const bool whole = documents.finish() || settings.partial;
    return directory.finish() && whole;
}

static bool write_cfg(Devices &devices, const ExportSettings &settings)
{
    Documents documents;
    if (settings.directory != nullptr)
        return write_files(devices, settings, documents);
    OutputFile file(settings.output, MODE_SECRET);
    devices.for_each([&](const WtpRecord &wtp) { file.put(documents.make(wtp)); });
    const bool whole = documents.finish() || settings.partial;
    file.finish();
    return whole;
}

const Format cfg_format = {WTP_FILTER_ALL & ~uint32_t{WTP_FILTER_STAINF}, write_cfg};
