// SPDX-License-Identifier: MIT
#include "documents/strict_json.h"

#include "common/json_acceptor.h"

#include <algorithm>

using Json = nlohmann::json;

namespace {

// Keeps what is wrong.
struct FaultFinder : JsonAcceptor {
    size_t position = 0;
    std::string reason;
    bool is_range = false; // of a number

    bool parse_error(size_t at, const std::string &,
                     const nlohmann::detail::exception &why) override
    {
        enum : int { OUT_OF_RANGE = 406 };
        position = at;
        is_range = why.id == OUT_OF_RANGE;
        reason = why.what();
        return false;
    }
};

// The library's reason without its own prefix and what it quotes of the file.
std::string shortened_reason(const std::string &why)
{
    const size_t dash = why.find(" - "), quote = why.find("; last read:");
    const size_t from = dash == std::string::npos ? 0 : dash + 3;
    return why.substr(from, quote == std::string::npos ? quote : quote - from);
}

unsigned line_at(std::string_view text, size_t position)
{
    const size_t end = std::min(position, text.size());
    return 1 + static_cast<unsigned>(std::count(text.data(), text.data() + end, '\n'));
}

} // namespace

JsonFault find_json_fault(std::string_view text)
{
    if (text.starts_with("\xEF\xBB\xBF"))
        return {1, "a byte order mark"};
    if (const size_t nul = text.find('\0'); nul != std::string_view::npos)
        return {line_at(text, nul), "a NUL byte"};
    FaultFinder finder;
    if (Json::sax_parse(text.begin(), text.end(), &finder))
        return {};
    const unsigned line = line_at(text, finder.position == 0 ? 0 : finder.position - 1);
    if (finder.is_range)
        return {line, "it is out of range", "Most programs cannot read a number:"};
    return {line, shortened_reason(finder.reason)};
}
