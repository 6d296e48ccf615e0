// SPDX-License-Identifier: MIT
#include "common/plain_text.h"

#include "common/utf8.h"

#include <cstdint>
#include <cstdio>

// What moves the cursor, changes the terminal or the direction of writing, or is not seen at all.
static bool is_unsafe(const Utf8Character &character)
{
    const char32_t code = character.code;
    return character.is_control() || code == 0x00AD || code == 0x061C ||
           (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF ||
           (code >= 0xE0000 && code <= 0xE007F);
}

// The text with each character as `shown` wants it, which is given the character and its bytes. Bad
// bytes are shown one by one.
template <class Shown> static std::string changed(std::string_view text, Shown shown)
{
    std::string made;
    while (!text.empty()) {
        const Utf8Character next = first_character(text);
        const size_t length = next.valid ? next.length : 1;
        made += shown(next, text.substr(0, length));
        text.remove_prefix(length);
    }
    return made;
}

std::string plain_text(std::string_view text)
{
    return changed(text, [](const Utf8Character &character, std::string_view bytes) {
        return !character.valid || is_unsafe(character) ? "?" : bytes;
    });
}

std::string quoted_text(std::string_view text)
{
    return '"' +
           changed(text,
                   [](const Utf8Character &character, std::string_view bytes) -> std::string {
                       char escape[32]; // of at most 12 characters
                       if (!character.valid)
                           return "\xEF\xBF\xBD";
                       if (bytes == "\"" || bytes == "\\")
                           return '\\' + std::string(bytes);
                       if (!is_unsafe(character))
                           return std::string(bytes);
                       const uint32_t code = character.code;
                       if (code <= 0xFFFF)
                           snprintf(escape, sizeof escape, "\\u%04x", code);
                       else
                           snprintf(escape, sizeof escape, "\\u%04x\\u%04x", 0xD7C0 + (code >> 10),
                                    0xDC00 + (code & 0x3FF));
                       return escape;
                   }) +
           '"';
}
