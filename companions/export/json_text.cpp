// SPDX-License-Identifier: MIT
#include "export/json_text.h"

#include "export/text.h"

namespace {

// Each function takes what it is named for from the front of the text, if that is there.
class Parser {
public:
    Parser(std::string_view text, std::string &to) : text_(text), to_(to) {}

    bool document()
    {
        blanks();
        if (!value(0))
            return false;
        blanks();
        return text_.empty();
    }

private:
    char first() const { return text_.empty() ? '\0' : text_[0]; }

    void blanks()
    {
        const size_t end = text_.find_first_not_of(" \t\n\r");
        text_.remove_prefix(end == std::string_view::npos ? text_.size() : end);
    }

    void keep(size_t count)
    {
        to_ += text_.substr(0, count);
        text_.remove_prefix(count);
    }

    bool symbol(char c)
    {
        if (first() != c)
            return false;
        keep(1);
        return true;
    }

    bool word(std::string_view known)
    {
        if (!text_.starts_with(known))
            return false;
        keep(known.size());
        return true;
    }

    bool value(unsigned depth)
    {
        switch (first()) {
        case '{':
            return depth < JSON_DEPTH_MAX && list(depth, '}', true);
        case '[':
            return depth < JSON_DEPTH_MAX && list(depth, ']', false);
        case '"':
            return string();
        default:
            return word("true") || word("false") || word("null") || number();
        }
    }

    // The elements of an array, or the members of an object.
    bool list(unsigned depth, char end, bool named)
    {
        keep(1);
        blanks();
        if (symbol(end))
            return true;
        do {
            blanks();
            if (named && !name())
                return false;
            if (!value(depth + 1))
                return false;
            blanks();
        } while (symbol(','));
        return symbol(end);
    }

    bool name()
    {
        if (!string())
            return false;
        blanks();
        if (!symbol(':'))
            return false;
        blanks();
        return true;
    }

    bool string()
    {
        if (!symbol('"'))
            return false;
        while (!text_.empty() && first() != '"')
            if (first() == '\\' ? !escape() : !character())
                return false;
        return symbol('"');
    }

    bool escape()
    {
        keep(1);
        if (!symbol('u')) {
            const bool known =
                std::string_view("\"\\/bfnrt").find(first()) != std::string_view::npos;
            if (known && !text_.empty())
                keep(1);
            return known;
        }
        if (text_.size() < 4 || text_.substr(0, 4).find_first_not_of("0123456789abcdefABCDEF") !=
                                    std::string_view::npos)
            return false;
        keep(4);
        return true;
    }

    // Those of DEL and C1 can stand in JSON as they are, but better do not.
    bool character()
    {
        const Utf8Character next = first_character(text_);
        if (!next.valid || next.code < ' ')
            return false;
        if (!next.is_control()) {
            keep(next.length);
            return true;
        }
        char escaped[2 * JSON_GROWTH];
        to_.append(escaped, write_json_text(escaped, text_.substr(0, next.length)));
        text_.remove_prefix(next.length);
        return true;
    }

    bool digits()
    {
        size_t count = text_.find_first_not_of("0123456789");
        if (count == std::string_view::npos)
            count = text_.size();
        keep(count);
        return count > 0;
    }

    bool number()
    {
        symbol('-');
        if (!symbol('0') && !digits())
            return false;
        if (symbol('.') && !digits())
            return false;
        if (first() != 'e' && first() != 'E')
            return true;
        keep(1);
        if (!symbol('-'))
            symbol('+');
        return digits();
    }

    std::string_view text_;
    std::string &to_;
};

} // namespace

bool append_json(std::string &to, std::string_view text)
{
    const size_t before = to.size();
    if (Parser(text, to).document())
        return true;
    to.resize(before);
    return false;
}
