// SPDX-License-Identifier: MIT
#include "config/config_walk.h"

#include <cstring>

static void append_path(JsonIterStack &stack, std::string_view text)
{
    if (stack.path_length + text.size() <= sizeof stack.path)
        memcpy(stack.path + stack.path_length, text.data(), text.size());
    stack.path_length += text.size();
}

static int hand_over(const JsonIterStack &stack, const json_value &value,
                     const JsonVisitor &visitor)
{
    if (stack.path_length > sizeof stack.path)
        return 0;
    return visitor.take({stack.path, stack.path_length}, {stack.key, stack.key_length}, value,
                        visitor.context);
}

static int walk_object(JsonIterStack &stack, const json_value &object, const JsonVisitor &visitor)
{
    const size_t length = stack.path_length;
    if (object.u.object.length == 0)
        return visitor.refuse(object, nullptr, visitor.context);
    for (uint32_t i = 0; i < object.u.object.length; i++) {
        const json_object_entry &member = object.u.object.values[i];
        stack.index[stack.count - 1] = i;
        append_path(stack, stack.count > 1 ? "." : "");
        append_path(stack, {member.name, member.name_length});
        if (json_walk(stack, *member.value, visitor) != 0)
            return 1;
        stack.path_length = length;
    }
    return 0;
}

static int walk_array(JsonIterStack &stack, const json_value &array, const JsonVisitor &visitor)
{
    const size_t length = stack.path_length;
    append_path(stack, "[]");
    uint8_t &key_byte = stack.key[stack.key_length++];
    key_byte = static_cast<uint8_t>(stack.index[stack.count - 1]);
    if (hand_over(stack, array, visitor) != 0)
        return 1;
    for (uint32_t i = 0; i < array.u.array.length; i++) {
        stack.index[stack.count - 1] = i;
        key_byte = static_cast<uint8_t>(i);
        if (json_walk(stack, *array.u.array.values[i], visitor) != 0)
            return 1;
    }
    stack.key_length--;
    stack.path_length = length;
    return 0;
}

int json_walk(JsonIterStack &stack, const json_value &value, const JsonVisitor &visitor)
{
    if (stack.count == JsonIterStack::DEPTH_MAX)
        return visitor.refuse(value, "ERROR: json iter stack is full.\n", visitor.context);
    stack.count++;
    int status = 1;
    switch (value.type) {
    case json_object:
        status = walk_object(stack, value, visitor);
        break;
    case json_array:
        status = walk_array(stack, value, visitor);
        break;
    case json_none:
    case json_integer:
    case json_double:
    case json_string:
    case json_boolean:
    case json_null:
        status = hand_over(stack, value, visitor);
        break;
    default:
        break;
    }
    stack.count--;
    return status;
}
