// SPDX-License-Identifier: MIT
#include "config/config_walk.h"

#include "util/output.h"

#include <cstring>

int ConfigWalk::visit(const json_value &value)
{
    if (depth_ == DEPTH_MAX)
        return fail("ERROR: json iter stack is full.\n");
    depth_++;
    int status = 1;
    switch (value.type) {
    case json_object:
        status = visit_object(value);
        break;
    case json_array:
        status = visit_array(value);
        break;
    case json_none:
    case json_integer:
    case json_double:
    case json_string:
    case json_boolean:
    case json_null:
        status = handler_.take_scalar({path_, path_length_}, {key_, key_length_}, value);
        break;
    default:
        break;
    }
    depth_--;
    return status;
}

int ConfigWalk::visit_object(const json_value &object)
{
    const size_t length = path_length_;
    if (object.u.object.length == 0)
        return 1;
    for (uint32_t i = 0; i < object.u.object.length; i++) {
        const json_object_entry &member = object.u.object.values[i];
        position_[depth_ - 1] = i;
        if (append_path(depth_ > 1 ? "." : "", member.name, member.name_length) != 0 ||
            visit(*member.value) != 0)
            return 1;
        path_length_ = length;
    }
    return 0;
}

int ConfigWalk::visit_array(const json_value &array)
{
    const size_t length = path_length_;
    if (append_path("", "[]", 2) != 0)
        return 1;
    uint8_t &key_byte = key_[key_length_++];
    key_byte = static_cast<uint8_t>(position_[depth_ - 1]);
    if (handler_.take_array({path_, path_length_}, {key_, key_length_}, array.u.array.length) != 0)
        return 1;
    for (uint32_t i = 0; i < array.u.array.length; i++) {
        position_[depth_ - 1] = i;
        key_byte = static_cast<uint8_t>(i);
        if (visit(*array.u.array.values[i]) != 0)
            return 1;
    }
    key_length_--;
    path_length_ = length;
    return 0;
}

int ConfigWalk::append_path(const char *separator, const char *name, size_t length)
{
    const size_t separator_length = strlen(separator);
    if (path_length_ + separator_length + length > sizeof path_)
        return fail("ERROR: config path '%.*s%s%.*s' is too long.\n",
                    static_cast<int>(path_length_), path_, separator, static_cast<int>(length),
                    name);
    memcpy(path_ + path_length_, separator, separator_length);
    memcpy(path_ + path_length_ + separator_length, name, length);
    path_length_ += separator_length + length;
    return 0;
}
