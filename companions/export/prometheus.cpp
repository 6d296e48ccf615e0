// SPDX-License-Identifier: MIT
// Metrics in Prometheus' text exposition format, for the textfile collector of its node exporter.
#include "common/output_file.h"
#include "export/formats.h"
#include "export/text.h"

#include <ctime>
#include <initializer_list>
#include <map>
#include <set>

namespace {

struct Label {
    const char *name;
    std::string_view value;
};

// "{name="value",...}"
std::string labels_of(std::initializer_list<Label> labels)
{
    std::string made;
    for (const Label &label : labels) {
        made += made.empty() ? '{' : ',';
        made += label.name;
        made += "=\"";
        for (const char c : clean(label.value)) {
            if (c == '"' || c == '\\')
                made += '\\';
            made += c;
        }
        made += '"';
    }
    return made + '}';
}

// A metric with its samples, which have to stand together.
class Metric {
public:
    Metric(const char *name, const char *type, const char *help)
        : name_(name),
          head_(std::string("# HELP ") + name + " " + help + "\n# TYPE " + name + " " + type + "\n")
    {
    }

    void add(std::string_view labels, int64_t value)
    {
        samples_ += name_;
        samples_ += labels;
        samples_ += ' ';
        samples_ += std::to_string(value);
        samples_ += '\n';
    }

    void write(OutputFile &file) const
    {
        if (samples_.empty())
            return;
        file.put(head_);
        file.put(samples_);
    }

private:
    std::string name_, head_, samples_;
};

// How much is written: of the fleet, of each device, or also of its radios, WLANs and ports.
enum class Detail { fleet, device, all };

class Metrics {
public:
    explicit Metrics(Detail detail) : detail_(detail) {}

    void take(const WtpRecord &wtp)
    {
        const std::string mac = mac_name(wtp.mac);
        devices_[{kind_name(wtp.wtp_type), state_name(wtp), wtp.managed != 0}]++;
        upgrading_count_ += is_upgrading(wtp);
        station_count_ += count_stations(wtp);
        if (detail_ == Detail::fleet)
            return;
        take_device(wtp, mac);
        take_upgrade(wtp, labels_of({{"mac", mac}}));
        for (uint32_t i = 0; detail_ == Detail::all && i < wtp.radio.size(); i++)
            take_radio(wtp, mac, i);
        if (wtp.wtp_type == DEVICE_SWITCH && wtp.state == WTP_ONLINE)
            take_switch(wtp, mac);
    }

    void write(OutputFile &file)
    {
        for (const auto &[group, count] : devices_)
            device_count_.add(labels_of({{"kind", group.kind},
                                         {"state", group.state},
                                         {"managed", group.managed ? "yes" : "no"}}),
                              count);
        upgrading_.add("", upgrading_count_);
        fleet_stations_.add("", station_count_);
        for (const Metric *metric : {&device_count_,
                                     &fleet_stations_,
                                     &info_,
                                     &up_,
                                     &uptime_,
                                     &memory_used_,
                                     &memory_total_,
                                     &upgrading_,
                                     &upgrade_flag_,
                                     &upgrade_state_,
                                     &upgrade_progress_,
                                     &channel_,
                                     &device_stations_,
                                     &stations_,
                                     &tx_bytes_,
                                     &rx_bytes_,
                                     &tx_packets_,
                                     &rx_packets_,
                                     &port_up_,
                                     &poe_budget_,
                                     &poe_allocated_,
                                     &poe_output_})
            metric->write(file);
    }

private:
    struct Group {
        std::string kind, state;
        bool managed;
        auto operator<=>(const Group &) const = default;
    };

    void take_device(const WtpRecord &wtp, const std::string &mac)
    {
        info_.add(labels_of({{"mac", mac},
                             {"name", wtp.name},
                             {"kind", kind_name(wtp.wtp_type)},
                             {"model", wtp.model},
                             {"serial", wtp.sn},
                             {"address", ipv4_name(wtp.ip)},
                             {"firmware", wtp.sw_ver}}),
                  1);
        const std::string labels = labels_of({{"mac", mac}});
        up_.add(labels, wtp.state == WTP_ONLINE);
        if (wtp.state != WTP_ONLINE)
            return;
        uptime_.add(labels, wtp.uptime);
        memory_used_.add(labels, wtp.mem.used);
        memory_total_.add(labels, wtp.mem.total);
        if (!wtp.radio.empty())
            device_stations_.add(labels, count_stations(wtp));
    }

    void take_upgrade(const WtpRecord &wtp, const std::string &labels)
    {
        if (!is_in_upgrade(wtp))
            return;
        upgrade_flag_.add(labels, wtp.upg_img != 0);
        upgrade_state_.add(labels, wtp.upg_state);
        upgrade_progress_.add(labels, wtp.progress);
    }

    // Radios and WLANs are counted from 1, as everywhere.
    void take_radio(const WtpRecord &wtp, const std::string &mac, uint32_t number)
    {
        const RadioInfo &radio = wtp.radio[number];
        const std::string radio_number = std::to_string(number + 1);
        channel_.add(labels_of({{"mac", mac}, {"radio", radio_number}}), radio.cur_cfg.channel);
        for (uint32_t i = 0; i < radio.wlan.size(); i++) {
            const WlanInfo &wlan = radio.wlan[i];
            const std::string labels = labels_of({{"mac", mac},
                                                  {"radio", radio_number},
                                                  {"wlan", std::to_string(i + 1)},
                                                  {"ssid", ssid_of(wtp, number, i)}});
            stations_.add(labels, wlan.sta.size());
            tx_bytes_.add(labels, wlan.tx_bytes);
            rx_bytes_.add(labels, wlan.rx_bytes);
            tx_packets_.add(labels, wlan.tx_pkt);
            rx_packets_.add(labels, wlan.rx_pkt);
        }
    }

    // A name stands in the configuration only, at the same place.
    static std::string_view ssid_of(const WtpRecord &wtp, uint32_t radio, uint32_t wlan)
    {
        if (wtp.wtp_cfg == nullptr || radio >= wtp.wtp_cfg->radio.size() ||
            wlan >= wtp.wtp_cfg->radio[radio].wlan.size())
            return "";
        return wtp.wtp_cfg->radio[radio].wlan[wlan].ssid;
    }

    void take_switch(const WtpRecord &wtp, const std::string &mac)
    {
        const std::string labels = labels_of({{"mac", mac}});
        poe_budget_.add(labels, wtp.poe_global.power_budget);
        poe_allocated_.add(labels, wtp.poe_global.allocated_power);
        if (detail_ != Detail::all)
            return;
        std::set<uint32_t> ports, poe_ports; // a series may be there once only
        for (const SwitchPortInfo &port : wtp.switch_port)
            if (ports.insert(port.port).second)
                port_up_.add(port_labels(mac, port.port), port.link_status != 0);
        for (const PoePortInfo &port : wtp.poe_port)
            if (poe_ports.insert(port.port).second)
                poe_output_.add(port_labels(mac, port.port), port.output_power);
    }

    static std::string port_labels(const std::string &mac, uint32_t port)
    {
        return labels_of({{"mac", mac}, {"port", std::to_string(port)}});
    }

    Detail detail_;
    std::map<Group, uint32_t> devices_;
    uint32_t upgrading_count_ = 0, station_count_ = 0;

    Metric device_count_{"zov_devices", "gauge", "Devices that the controller knows."};
    Metric info_{"zov_device_info", "gauge", "What a device is and runs; always 1."};
    Metric up_{"zov_device_up", "gauge", "Whether the device is online."};
    Metric uptime_{"zov_device_uptime_seconds", "gauge", "Time since the device started."};
    Metric memory_used_{"zov_device_memory_used", "gauge",
                        "Memory in use, in the unit of the device."};
    Metric memory_total_{"zov_device_memory_installed", "gauge",
                         "Memory of the device, in its unit."};
    Metric upgrading_{"zov_devices_upgrading", "gauge",
                      "Devices flagged for an upgrade or in the middle of one."};
    Metric upgrade_flag_{"zov_device_upgrade_pending", "gauge",
                         "Whether the device is flagged for an upgrade."};
    Metric upgrade_state_{"zov_device_upgrade_state", "gauge",
                          "The controller's code for the state of the upgrade."};
    Metric upgrade_progress_{"zov_device_upgrade_progress", "gauge",
                             "Progress of the upgrade, as the controller counts it."};
    Metric fleet_stations_{"zov_stations", "gauge", "Stations that have joined, of all devices."};
    Metric device_stations_{"zov_device_stations", "gauge",
                            "Stations that have joined the device."};
    Metric channel_{"zov_radio_channel", "gauge", "The channel that the radio is on."};
    Metric stations_{"zov_wlan_stations", "gauge", "Stations that have joined the WLAN."};
    Metric tx_bytes_{"zov_wlan_transmit_bytes_total", "counter", "Bytes sent to stations."};
    Metric rx_bytes_{"zov_wlan_receive_bytes_total", "counter", "Bytes received from stations."};
    Metric tx_packets_{"zov_wlan_transmit_packets_total", "counter", "Packets sent to stations."};
    Metric rx_packets_{"zov_wlan_receive_packets_total", "counter",
                       "Packets received from stations."};
    Metric port_up_{"zov_switch_port_up", "gauge", "Whether the port has a link."};
    Metric poe_budget_{"zov_poe_budget_watts", "gauge", "Power that all ports may draw."};
    Metric poe_allocated_{"zov_poe_allocated_watts", "gauge", "Power that all ports draw."};
    Metric poe_output_{"zov_poe_port_output_power", "gauge",
                       "Power that the port gives, in the unit of the switch."};
};

} // namespace

static void write_controller(OutputFile &file, bool is_up)
{
    Metric up("zov_controller_up", "gauge", "Whether the controller has answered.");
    up.add("", is_up);
    up.write(file);
    if (!is_up)
        return;
    Metric time_of_list("zov_list_timestamp_seconds", "gauge", "When the devices were listed.");
    time_of_list.add("", time(nullptr));
    time_of_list.write(file);
}

static void write_outage(const ExportSettings &settings)
{
    OutputFile file(settings.output, MODE_PUBLIC);
    write_controller(file, false);
    file.finish();
}

static Detail detail_of(const ExportSettings &settings)
{
    const std::string_view name = settings.metrics == nullptr ? "device" : settings.metrics;
    return name == "fleet" ? Detail::fleet : name == "all" ? Detail::all : Detail::device;
}

static bool write_prometheus(Devices &devices, const ExportSettings &settings)
{
    Metrics metrics(detail_of(settings));
    devices.for_each([&](const WtpRecord &wtp) {
        if (!devices.is_repeated(wtp.mac))
            metrics.take(wtp);
    });
    OutputFile file(settings.output, MODE_PUBLIC);
    write_controller(file, true);
    metrics.write(file);
    file.finish();
    return true;
}

const Format prometheus_format = {WTP_FILTER_ALL, write_prometheus, write_outage};
