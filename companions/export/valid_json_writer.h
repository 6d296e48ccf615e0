// SPDX-License-Identifier: MIT
// The writer of JSON that is always valid, for the printers of the report: whatever a device calls
// itself, every text is escaped, and what should be JSON is looked at.
#pragma once

#include "common/output_file.h"
#include "export/json_text.h"
#include "export/text.h"
#include "report/json_writer.h"

#include <memory>

// An OutputFile in the form of an Output.
class FileOutput {
public:
    explicit FileOutput(OutputFile &file) : file_(file), buffer_(new char[SIZE]) {}

    char *prepare(size_t size)
    {
        if (SIZE - used_ < size)
            flush();
        return buffer_.get() + used_;
    }
    void commit(const char *end) { used_ = static_cast<size_t>(end - buffer_.get()); }

    void put(const char *bytes, size_t length)
    {
        if (SIZE - used_ < length)
            flush();
        if (length > SIZE) {
            file_.put({bytes, length});
            return;
        }
        memcpy(buffer_.get() + used_, bytes, length);
        used_ += length;
    }
    void put(std::string_view text) { put(text.data(), text.size()); }
    void put(char c) { put(&c, 1); }

    void flush()
    {
        file_.put({buffer_.get(), used_});
        used_ = 0;
    }

    enum : size_t { PREPARE_MAX = 4096 };

private:
    enum : size_t { SIZE = 65536 };

    OutputFile &file_;
    std::unique_ptr<char[]> buffer_;
    size_t used_ = 0;
};

class ValidJsonWriter : public BasicJsonWriter<FileOutput> {
public:
    using Base = BasicJsonWriter<FileOutput>;
    using Base::Base;
    using Base::element;
    using Base::member;

    template <size_t N> void member(const char (&name)[N], std::string_view text)
    {
        if (text.size() > FileOutput::PREPARE_MAX / 2 / JSON_GROWTH) {
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
