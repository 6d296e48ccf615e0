// SPDX-License-Identifier: MIT
// The topology as a graph for Graphviz: switches with their ports as cells, and to the right of
// each what is connected to it.
#include "common/output_file.h"
#include "common/topology.h"
#include "export/formats.h"
#include "export/text.h"

#include <algorithm>
#include <cstring>

// A device's text for a label: what XML does not allow replaced, no entities, and not endless,
// since Graphviz refuses long ones.
static std::string label_text(std::string_view text)
{
    enum : unsigned { LENGTH_MAX = 200 };
    std::string made;
    for (unsigned i = 0; !text.empty(); i++) {
        if (i == LENGTH_MAX)
            return made + "...";
        const Utf8Character next = first_character(text);
        const bool is_allowed =
            next.valid && !next.is_control() && next.code != 0xFFFE && next.code != 0xFFFF;
        made += !is_allowed        ? "\xEF\xBF\xBD" // U+FFFD
                : next.code == '&' ? "&amp;"
                                   : std::string(text.substr(0, next.length));
        text.remove_prefix(next.length);
    }
    return made;
}

// A text in DOT's quotes.
static std::string dot_string(std::string_view text)
{
    std::string made = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            made += '\\';
        made += c;
    }
    return made + '"';
}

// A device's text for an HTML-like label.
static std::string html_text(std::string_view text)
{
    std::string made;
    for (const char c : label_text(text))
        made += c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '"' ? "&quot;" : std::string(1, c);
    return made;
}

namespace {

// A port of a switch is a cell of it, in the order of their numbers.
struct Switch {
    std::vector<std::string> ports;

    void add(const std::string &port)
    {
        if (std::find(ports.begin(), ports.end(), port) == ports.end())
            ports.push_back(port);
    }
    void sort()
    {
        std::sort(ports.begin(), ports.end(), [](const std::string &a, const std::string &b) {
            return strverscmp(a.c_str(), b.c_str()) < 0;
        });
    }
    [[nodiscard]] std::string cell_of(const std::string &port) const
    {
        const auto found = std::find(ports.begin(), ports.end(), port);
        return ":p" + std::to_string(found - ports.begin());
    }
};

class Drawing {
public:
    Drawing(const Topology &topology, std::vector<TopologyLink> links, OutputFile &file)
        : topology_(topology), links_(std::move(links)), file_(file)
    {
    }

    // All of it, or only a switch and what is connected to it.
    void draw(const Mac *around);

private:
    // A link can lead to a device of which nothing else is known.
    [[nodiscard]] const TopologyNode &node(const Mac &mac) const
    {
        static const TopologyNode UNKNOWN;
        const auto found = topology_.nodes().find(mac);
        return found == topology_.nodes().end() ? UNKNOWN : found->second;
    }
    [[nodiscard]] bool is_switch(const Mac &mac) const { return node(mac).type == DEVICE_SWITCH; }
    void draw_switch(const Mac &mac);
    void draw_device(const Mac &mac);
    void draw_link(const TopologyLink &link);
    void draw_legend();
    [[nodiscard]] std::string end_of(const Mac &mac, const std::string &port) const;

    const Topology &topology_;
    std::vector<TopologyLink> links_;
    OutputFile &file_;
    std::map<Mac, Switch> switches_;
    std::set<Mac> drawn_;
};

std::string id_of(const Mac &mac)
{
    return dot_string(mac_name(mac));
}

const char *colour_of(const TopologyNode &node)
{
    return !node.listed                       ? "#ffffff"
           : node.state != "online"           ? "#dddddd"
           : node.type == DEVICE_SWITCH       ? "#cfe2f3"
           : node.type == DEVICE_ACCESS_POINT ? "#d9ead3"
                                              : "#fff2cc";
}

// What is known of a device, one text after the other.
std::vector<std::string> texts_of(const Mac &mac, const TopologyNode &node)
{
    std::vector<std::string> texts = {node.name, node.model, node.address};
    std::erase(texts, "");
    if (node.name.empty() || node.type == DEVICE_SWITCH)
        texts.push_back(mac_name(mac));
    if (node.listed && node.state != "online")
        texts.push_back("(" + node.state + ")");
    return texts;
}

void Drawing::draw_switch(const Mac &mac)
{
    const TopologyNode &known = node(mac);
    const std::vector<std::string> &ports = switches_[mac].ports;
    std::string label;
    for (const std::string &text : texts_of(mac, known))
        label += label.empty() ? "<B>" + html_text(text) + "</B>" : "<BR/>" + html_text(text);
    std::string rows;
    for (size_t i = 0; i < ports.size(); i++)
        rows += (i > 0 ? "</TR><TR>" : "") + ("<TD PORT=\"p" + std::to_string(i)) + "\">" +
                html_text(ports[i]) + "</TD>";
    file_.put("    " + id_of(mac) + " [shape=none, margin=0, label=<<TABLE BORDER=\"0\" " +
              "CELLBORDER=\"1\" CELLSPACING=\"0\" BGCOLOR=\"" + colour_of(known) +
              "\"><TR><TD ROWSPAN=\"" + std::to_string(std::max<size_t>(ports.size(), 1)) + "\">" +
              label + "</TD>" + rows + "</TR></TABLE>>];\n");
}

void Drawing::draw_device(const Mac &mac)
{
    const TopologyNode &known = node(mac);
    std::string label;
    for (const std::string &text : texts_of(mac, known))
        label += (label.empty() ? "" : "  ") + label_text(text);
    file_.put("    " + id_of(mac) + " [shape=box, style=\"rounded,filled" +
              (known.listed ? "" : ",dashed") + "\", height=0.3, fillcolor=\"" + colour_of(known) +
              "\", label=" + dot_string(label) + "];\n");
}

std::string Drawing::end_of(const Mac &mac, const std::string &port) const
{
    const auto found = switches_.find(mac);
    return id_of(mac) +
           (found == switches_.end() || port.empty() ? "" : found->second.cell_of(port) + ":e");
}

// Between switches both ends are cells at the same side; other ports than those of switches are not
// shown, but for links without a switch.
void Drawing::draw_link(const TopologyLink &link)
{
    const bool turned = !is_switch(link.from) && is_switch(link.to);
    const Mac &from = turned ? link.to : link.from, &to = turned ? link.from : link.to;
    const std::string &from_port = turned ? link.to_port : link.from_port;
    const std::string &to_port = turned ? link.from_port : link.to_port;
    std::string attributes;
    if (is_switch(from) && is_switch(to))
        attributes = " [constraint=false]";
    else if (!is_switch(from))
        attributes = " [taillabel=" + dot_string(label_text(from_port)) +
                     ", headlabel=" + dot_string(label_text(to_port)) + "]";
    file_.put("  " + end_of(from, from_port) + " -- " +
              (is_switch(to) ? end_of(to, to_port) : id_of(to) + ":w") + attributes + ";\n");
}

void Drawing::draw_legend()
{
    static constexpr const char *ROWS[][2] = {{"#cfe2f3", "switch, with its ports"},
                                              {"#d9ead3", "access point"},
                                              {"#fff2cc", "other device"},
                                              {"#dddddd", "offline"},
                                              {"#ffffff", "known from a neighbour"}};
    std::string rows;
    for (const auto &[colour, text] : ROWS)
        rows += std::string("<TR><TD BGCOLOR=\"") + colour + "\">" + text + "</TD></TR>";
    file_.put("  legend [shape=none, fontsize=8, label=<<TABLE BORDER=\"0\" CELLBORDER=\"1\" "
              "CELLSPACING=\"0\">" +
              rows + "</TABLE>>];\n");
}

void Drawing::draw(const Mac *around)
{
    if (around != nullptr)
        std::erase_if(links_, [=](const TopologyLink &link) {
            return link.from != *around && link.to != *around;
        });
    for (const auto &[mac, known] : topology_.nodes())
        if (known.type == DEVICE_SWITCH)
            switches_[mac];
    for (const TopologyLink &link : links_)
        for (const auto &[mac, port] :
             {std::pair(link.from, link.from_port), {link.to, link.to_port}})
            if (switches_.count(mac) != 0 && !port.empty())
                switches_[mac].add(port);
    for (auto &[mac, one] : switches_) {
        one.sort();
        if (around != nullptr && mac != *around)
            continue;
        drawn_.insert(mac);
        file_.put("  subgraph " + id_of(mac) + " {\n");
        draw_switch(mac);
        for (const TopologyLink &link : links_) {
            const Mac &other = link.from == mac ? link.to : link.from;
            if ((link.from == mac || link.to == mac) && (!is_switch(other) || around != nullptr) &&
                drawn_.insert(other).second)
                is_switch(other) ? draw_switch(other) : draw_device(other);
        }
        file_.put("  }\n");
    }
    std::string unlinked;
    for (const auto &[mac, known] : topology_.nodes())
        if (around == nullptr && drawn_.insert(mac).second) {
            draw_device(mac);
            unlinked += " " + id_of(mac) + ";";
        }
    if (!unlinked.empty())
        file_.put("  { rank=max;" + unlinked + " }\n");
    for (const TopologyLink &link : links_) {
        for (const Mac &mac : {link.from, link.to})
            if (drawn_.insert(mac).second)
                draw_device(mac);
        draw_link(link);
    }
    draw_legend();
}

} // namespace

// The switch of this name or address.
static Mac find_switch(const Topology &topology, const char *text)
{
    Mac given;
    const bool is_mac = parse_mac(text, given);
    for (const auto &[mac, node] : topology.nodes())
        if (node.type == DEVICE_SWITCH && (is_mac ? mac == given : node.name == text))
            return mac;
    throw Failure(std::string("there is no switch '") + text + "'");
}

static bool write_dot(Devices &devices, const ExportSettings &settings)
{
    Topology topology;
    devices.for_each([&](const WtpRecord &wtp) { topology.add(wtp); });
    Mac around;
    if (settings.around != nullptr)
        around = find_switch(topology, settings.around);
    OutputFile file(settings.output, MODE_PUBLIC);
    file.put("graph topology {\n"
             "  graph [rankdir=LR, ranksep=1.1, nodesep=0.08, bgcolor=white];\n"
             "  node [fontname=\"sans-serif\", fontsize=10];\n"
             "  edge [fontname=\"sans-serif\", fontsize=8, color=\"#666666\"];\n");
    Drawing(topology, topology.links(), file).draw(settings.around == nullptr ? nullptr : &around);
    file.put("}\n");
    file.finish();
    return true;
}

const Format dot_format = {WTP_FILTER_ALL & ~uint32_t{WTP_FILTER_CFG | WTP_FILTER_STAINF},
                           write_dot};
