// SPDX-License-Identifier: MIT
// The writer of JSON that is always valid, for the printers of the report: whatever a device calls
// itself, every text is escaped, and what should be JSON is looked at.
#pragma once

#include "common/output_file.h"
#include "export/json_text.h"
#include "export/text.h"
#include "report/json_writer.h"

class ValidJsonWriter : public BasicJsonWriter<OutputFile> {
public:
    using Base = BasicJsonWriter<OutputFile>;
    using Base::Base;
    using Base::element;
    using Base::member;

    template <size_t N> void member(const char (&name)[N], std::string_view text)
    {
        if (text.size() > OutputFile::PREPARE_MAX / 2 / JSON_GROWTH) {
            std::string long_text;
            append_json_string(long_text, text);
            Base::raw(name, long_text);
            return;
        }
        close_string(write_json_text(open_string(name, JSON_GROWTH * text.size()), text));
    }
    template <size_t N> void member(const char (&name)[N], const char *text)
    {
        member(name, std::string_view(text));
    }
    template <size_t N> void escaped(const char (&name)[N], std::string_view text)
    {
        member(name, text);
    }
    template <size_t N> void single_line(const char (&name)[N], std::string_view text)
    {
        std::string line;
        for (const char c : text)
            if (c != '\r' && c != '\n')
                line += c;
        member(name, std::string_view(line));
    }

    void element(std::string_view text)
    {
        std::string string;
        append_json_string(string, text);
        out_.commit(next(0));
        out_.put(string);
    }
    void escaped_element(std::string_view text) { element(text); }

    // What is no JSON after all becomes a string.
    template <size_t N> void raw(const char (&name)[N], std::string_view json)
    {
        std::string value;
        if (!append_json(value, json))
            append_json_string(value, json);
        Base::raw(name, value);
    }
};
