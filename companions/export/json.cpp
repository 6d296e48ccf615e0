// SPDX-License-Identifier: MIT
// The report's JSON as one document, or as one line a device.
#include "export/formats.h"
#include "export/valid_json_writer.h"
#include "report/json_members.h"

static void print_device(ValidJsonWriter &json, const WtpRecord &wtp)
{
    json_members::print_wtp(json, wtp, {});
}

static bool write_document(Devices &devices, const ExportSettings &settings)
{
    OutputFile file(settings.output, MODE_SECRET);
    ValidJsonWriter json(file);
    json.object();
    json.array("wtp_list");
    devices.for_each([&](const WtpRecord &wtp) { print_device(json, wtp); });
    json.end_array();
    json.end_object();
    file.put('\n');
    file.finish();
    return true;
}

static bool write_lines(Devices &devices, const ExportSettings &settings)
{
    OutputFile file(settings.output, MODE_SECRET);
    devices.for_each([&](const WtpRecord &wtp) {
        ValidJsonWriter json(file);
        print_device(json, wtp);
        file.put('\n');
    });
    file.finish();
    return true;
}

const Format json_format = {WTP_FILTER_ALL, write_document};
const Format ndjson_format = {WTP_FILTER_ALL, write_lines};
