// SPDX-License-Identifier: MIT
// The stored configurations as documents that zov cfg --file takes.
#include "common/output_file.h"
#include "common/settings_tree.h"
#include "export/cfg_writer.h"
#include "export/formats.h"
#include "export/json_text.h"

#include <algorithm>
#include <cstdio>

enum : int { INDENTATION = 2 };

namespace {

class Documents {
public:
    // The document of a device; empty when it has none, which is reported.
    std::string make(const WtpRecord &wtp)
    {
        const std::string mac = mac_name(wtp.mac);
        if (wtp.wtp_cfg == nullptr)
            return lacks(mac, "the controller has no configuration of it");
        const bool is_switch = wtp.wtp_type == DEVICE_SWITCH;
        if (!is_switch && wtp.wtp_type != DEVICE_ACCESS_POINT) {
            others_++;
            return "";
        }
        CfgWriter &writer = is_switch ? of_switches_ : of_access_points_;
        CfgWriter::Json settings = writer.write(*wtp.wtp_cfg);
        for (const std::string &setting : writer.left_out())
            fprintf(stderr, "zov-export: %s: left out: %s\n", mac.c_str(), setting.c_str());
        if (settings.is_null())
            return lacks(mac, "nothing of its configuration can be sent");
        made_++;
        const DeviceKind kind = is_switch ? DEVICE_SWITCH : DEVICE_ACCESS_POINT;
        CfgWriter::Json document = {{"comment", mac + sending_hint(kind)}};
        document["wtp_cfg"] = std::move(settings);
        return escape_controls(document.dump(INDENTATION)) + "\n";
    }

    // To be called at the end: what all documents lack.
    void finish() const
    {
        if (others_ > 0)
            fprintf(stderr,
                    "zov-export: nothing can be sent to what is neither access point nor switch "
                    "(devices: %u)\n",
                    others_);
        if (made_ == 0)
            throw Failure("there is no configuration to write");
        fprintf(stderr,
                "zov-export: wtp_cfg.password is left out, as the controller has digests of "
                "passwords only (devices: %u)\n",
                made_);
    }

private:
    static std::string lacks(const std::string &mac, const char *why)
    {
        fprintf(stderr, "zov-export: %s: %s\n", mac.c_str(), why);
        return "";
    }

    CfgWriter of_access_points_{DEVICE_ACCESS_POINT};
    CfgWriter of_switches_{DEVICE_SWITCH};
    unsigned made_ = 0, others_ = 0;
};

} // namespace

// "02-A3-00-00-00-01.json"
static std::string file_name(const Mac &mac)
{
    std::string name = mac_name(mac);
    std::replace(name.begin(), name.end(), ':', '-');
    return name + ".json";
}

static void write_files(Devices &devices, const std::string &path, Documents &documents)
{
    const Descriptor directory = open_directory(path);
    devices.for_each([&](const WtpRecord &wtp) {
        const std::string document = documents.make(wtp);
        if (document.empty())
            return;
        OutputFile file(directory, file_name(wtp.mac), path, MODE_SECRET);
        file.put(document);
        file.finish();
    });
    documents.finish();
}

static void write_cfg(Devices &devices, const ExportSettings &settings)
{
    Documents documents;
    if (settings.directory != nullptr)
        return write_files(devices, settings.directory, documents);
    OutputFile file(settings.output, MODE_SECRET);
    devices.for_each([&](const WtpRecord &wtp) { file.put(documents.make(wtp)); });
    documents.finish();
    file.finish();
}

const Format cfg_format = {WTP_FILTER_ALL & ~uint32_t{WTP_FILTER_STAINF}, write_cfg};
