// SPDX-License-Identifier: MIT
#include "export/json_text.h"

#include "common/json_acceptor.h"
#include "export/text.h"

namespace {

// Takes what the parser finds, and counts how deep it is.
class DepthCheck : public JsonAcceptor {
public:
    bool start_object(size_t) override { return ++depth_ <= JSON_DEPTH_MAX; }
    bool start_array(size_t) override { return ++depth_ <= JSON_DEPTH_MAX; }
    bool end_object() override { return depth_-- > 0; }
    bool end_array() override { return depth_-- > 0; }

private:
    unsigned depth_ = 0;
};

} // namespace

bool append_json(std::string &to, std::string_view text)
{
    DepthCheck check;
    if (!nlohmann::json::sax_parse(text, &check))
        return false;
    std::string compact;
    bool in_string = false;
    for (size_t i = 0; i < text.size(); i++) {
        const char c = text[i];
        if (!in_string && (c == ' ' || c == '\t' || c == '\r' || c == '\n'))
            continue;
        compact += c;
        if (in_string && c == '\\')
            compact += text[++i];
        else if (c == '"')
            in_string = !in_string;
    }
    to += escape_controls(std::move(compact));
    return true;
}

std::string escape_controls(std::string json)
{
    const bool any =
        json.find('\x7F') != std::string::npos || json.find('\xC2') != std::string::npos;
    for (size_t at = 0; any && at < json.size(); at++) {
        if (json[at] != '\x7F' && json[at] != '\xC2') // what DEL and C1 begin with
            continue;
        const Utf8Character character = first_character(std::string_view(json).substr(at));
        char escape[JSON_GROWTH];
        const auto size = static_cast<size_t>(
            write_json_text(escape, std::string_view(json).substr(at, character.length)) - escape);
        json.replace(at, character.length, escape, size);
        at += size - 1;
    }
    return json;
}
