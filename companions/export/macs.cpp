// SPDX-License-Identifier: MIT
// The addresses of the devices, joined by commas, for the command line of another program.
#include "common/output_file.h"
#include "export/formats.h"

// Nothing at all is an error: to zov an empty list can mean every device.
static bool write_macs(Devices &devices, const ExportSettings &settings)
{
    std::string line;
    devices.for_each(
        [&](const WtpRecord &wtp) { line += (line.empty() ? "" : ",") + mac_name(wtp.mac); });
    if (line.empty())
        throw Failure("no device is chosen");
    OutputFile file(settings.output, MODE_PUBLIC);
    file.put(line + "\n");
    file.finish();
    return true;
}

const Format macs_format = {WTP_FILTER_MANAGED | WTP_FILTER_UNMANAGED | WTP_FILTER_UNJOINED,
                            write_macs};
