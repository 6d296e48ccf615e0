// SPDX-License-Identifier: MIT
// The writer for the report's printers that takes down which members there are, instead of what
// they hold.
#pragma once

#include "device/wtp_record.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

enum class MemberType { object, array, integer, text, any };

struct Member {
    std::string name; // empty for an array's element
    std::string path; // as in settings.def
    MemberType type = MemberType::any;
    int64_t low = 0, high = 0;   // of an integer
    const char *pattern = "";    // of a text that has one
    const char *words = "";      // what the text is, if it has a pattern
    uint32_t times = 0;          // how often it was there
    uint32_t count = 0;          // of an array that always has so many elements
    std::vector<Member> members; // of an object; an array's one element
};

class MemberRecorder {
public:
    MemberRecorder() { root_.type = MemberType::object; }

    // What was printed in all: the members of the object that was printed.
    const Member &element() const { return root_; }

    void member(std::string_view name, uint32_t) { integer(name, 0, UINT32_MAX); }
    void member(std::string_view name, int32_t) { integer(name, INT32_MIN, INT32_MAX); }
    void member(std::string_view name, uint16_t) { integer(name, 0, UINT16_MAX); }
    void member(std::string_view name, uint8_t) { integer(name, 0, UINT8_MAX); }
    void member(std::string_view name, const Mac &) { text(take(name), MAC, "MAC address"); }
    void member(std::string_view name, Ipv4) { text(take(name), IPV4, "IPv4 address"); }
    void member(std::string_view name, const Md5Digest &)
    {
        text(take(name), "^[0-9a-f]{32}$", "MD5 digest");
    }
    void member(std::string_view name, const CfgCap &cap)
    {
        Member &list = take(name);
        list.type = MemberType::array;
        list.count = sizeof cap.flag;
        Member &flag = list.members.empty() ? list.members.emplace_back() : list.members[0];
        flag.type = MemberType::integer;
        flag.high = UINT8_MAX;
    }
    void member(std::string_view name, std::string_view) { text(take(name)); }
    void member(std::string_view name, const char *) { text(take(name)); }
    void escaped(std::string_view name, std::string_view) { text(take(name)); }
    void single_line(std::string_view name, std::string_view) { text(take(name)); }
    void quoted_member(std::string_view name, int32_t)
    {
        text(take(name), "^-?[0-9]+$", "text with a number");
    }
    void raw(std::string_view name, std::string_view) { take(name).type = MemberType::any; }

    void object(std::string_view name) { enter(take(name), MemberType::object); }
    void object()
    {
        if (way_.empty()) // the device itself
            root_.times++;
        enter(way_.empty() ? root_ : take_element(), MemberType::object);
    }
    void end_object() { way_.pop_back(); }
    void array(std::string_view name) { enter(take(name, "[]"), MemberType::array); }
    void end_array() { way_.pop_back(); }
    void element(std::string_view) { text(take_element()); }
    void element(const Mac &) { text(take_element(), MAC, "MAC address"); }
    void escaped_element(std::string_view) { text(take_element()); }

private:
    static constexpr const char *MAC = "^[0-9A-F]{2}(:[0-9A-F]{2}){5}$";
    static constexpr const char *IPV4 = "^[0-9]{1,3}(\\.[0-9]{1,3}){3}$";

    // The member of the current object, which is there or is put behind the one that was taken
    // last.
    Member &take(std::string_view name, const char *suffix = "")
    {
        Member &in = *way_.back();
        for (Member &known : in.members)
            if (known.name == name) {
                known.times++;
                return known;
            }
        Member &made = in.members.emplace_back();
        made.name = name;
        made.path = in.path + (in.path.empty() ? "" : ".") + made.name + suffix;
        made.times = 1;
        return made;
    }

    // An element, whose path is its array's.
    Member &take_element()
    {
        Member &list = *way_.back();
        if (list.members.empty())
            list.members.emplace_back().path = list.path;
        list.members[0].times++;
        return list.members[0];
    }

    void integer(std::string_view name, int64_t low, int64_t high)
    {
        Member &made = take(name);
        made.type = MemberType::integer;
        made.low = low;
        made.high = high;
    }

    static void text(Member &made, const char *pattern = "", const char *words = "")
    {
        made.type = MemberType::text;
        made.pattern = pattern;
        made.words = words;
    }

    void enter(Member &made, MemberType type)
    {
        made.type = type;
        way_.push_back(&made);
    }

    Member root_;
    std::vector<Member *> way_; // the objects and arrays that have not ended
};
