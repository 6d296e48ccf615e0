// SPDX-License-Identifier: MIT
// The topology as a graph for Graphviz: switches in a column, beside it what is connected to them.
#include "common/output_file.h"
#include "common/topology.h"
#include "export/formats.h"
#include "export/text.h"

#include <algorithm>

// A text in DOT's quotes; "\n" parts its lines.
static std::string quoted(std::string_view text)
{
    std::string made = "\"";
    while (!text.empty()) {
        const size_t line = std::min(text.find('\n'), text.size());
        for (const char c : clean(text.substr(0, line))) {
            if (c == '"' || c == '\\')
                made += '\\';
            made += c;
        }
        text.remove_prefix(line);
        if (!text.empty()) {
            made += "\\n";
            text.remove_prefix(1);
        }
    }
    return made + '"';
}

// A label's lines: what is known of the device. A line end within a text is none of the label's.
static std::string label_of(const Mac &mac, const TopologyNode &node)
{
    std::string label;
    for (const std::string &text : {node.name, node.model, node.address, mac_name(mac)}) {
        if (text.empty())
            continue;
        label += (label.empty() ? "" : "\n") + clean(text);
    }
    return label;
}

static std::string style_of(const TopologyNode &node)
{
    std::string style = node.type == DEVICE_SWITCH ? "shape=box, penwidth=2" : "shape=box";
    style += ", style=\"filled";
    style += node.type == DEVICE_SWITCH ? "" : ",rounded";
    style += node.listed ? "\"" : ",dashed\"";
    const char *colour = !node.listed                       ? "#ffffff"
                         : node.state != "online"           ? "#dddddd"
                         : node.type == DEVICE_SWITCH       ? "#cfe2f3"
                         : node.type == DEVICE_ACCESS_POINT ? "#d9ead3"
                                                            : "#fff2cc";
    return style + ", fillcolor=\"" + colour + "\"";
}

static void write_column(OutputFile &file, const char *rank, const std::string &ids)
{
    if (!ids.empty())
        file.put(std::string("  { rank=") + rank + ";" + ids + " }\n");
}

// The switches stand in the first column, what is connected to none in the last.
static void write_nodes(OutputFile &file, const Topology &topology,
                        const std::vector<TopologyLink> &links)
{
    std::set<Mac> linked;
    for (const TopologyLink &link : links) {
        linked.insert(link.from);
        linked.insert(link.to);
    }
    std::string switches, unlinked;
    for (const auto &[mac, node] : topology.nodes()) {
        std::string label = label_of(mac, node);
        if (node.listed && node.state != "online")
            label += "\n(" + node.state + ")";
        const std::string id = " \"" + mac_name(mac) + "\"";
        file.put(" " + id + " [label=" + quoted(label) + ", " + style_of(node) + "];\n");
        if (node.type == DEVICE_SWITCH)
            switches += id + ";";
        else if (linked.count(mac) == 0)
            unlinked += id + ";";
    }
    write_column(file, "min", switches);
    write_column(file, "max", unlinked);
}

static bool write_dot(Devices &devices, const ExportSettings &settings)
{
    Topology topology;
    devices.for_each([&](const WtpRecord &wtp) { topology.add(wtp); });
    OutputFile file(settings.output, MODE_PUBLIC);
    file.put("graph topology {\n"
             "  graph [rankdir=LR, ranksep=1.5, nodesep=0.15, fontname=\"sans-serif\"];\n"
             "  node [fontname=\"sans-serif\", fontsize=10, margin=\"0.1,0.05\"];\n"
             "  edge [fontname=\"sans-serif\", fontsize=8, color=\"#666666\"];\n");
    const std::vector<TopologyLink> links = topology.links();
    write_nodes(file, topology, links);
    for (const TopologyLink &link : links)
        file.put("  \"" + mac_name(link.from) + "\" -- \"" + mac_name(link.to) + "\" [taillabel=" +
                 quoted(link.from_port) + ", headlabel=" + quoted(link.to_port) + "];\n");
    file.put("}\n");
    file.finish();
    return true;
}

const Format dot_format = {WTP_FILTER_ALL & ~uint32_t{WTP_FILTER_CFG | WTP_FILTER_STAINF},
                           write_dot};
