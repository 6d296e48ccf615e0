// SPDX-License-Identifier: MIT
#include "support/transcript.h"

#include <cctype>
#include <fstream>
#include <map>
#include <stdexcept>

namespace {

// A scanner over one line of a transcript file.
struct Scanner {
    const std::string &text;
    size_t at;

    bool more() const { return at < text.size(); }
    char peek() const { return text[at]; }
    void skip_blanks()
    {
        while (more() && peek() == ' ')
            at++;
    }
};

int hex_digit(char c)
{
    if (!isxdigit(static_cast<unsigned char>(c)))
        throw std::runtime_error(std::string("'") + c + "' is no hexadecimal digit");
    return isdigit(static_cast<unsigned char>(c)) ? c - '0' : tolower(c) - 'a' + 10;
}

char hex_pair(Scanner &in)
{
    if (in.at + 2 > in.text.size())
        throw std::runtime_error("half a byte");
    const int value = hex_digit(in.text[in.at]) * 16 + hex_digit(in.text[in.at + 1]);
    in.at += 2;
    return static_cast<char>(value);
}

// What stands behind a backslash.
char escape(Scanner &in)
{
    static const std::map<char, char> letters = {
        {'t', '\t'}, {'n', '\n'}, {'r', '\r'}, {'\\', '\\'}, {'"', '"'}};
    const char letter = in.more() ? in.text[in.at++] : '\0';
    if (letter == 'x')
        return hex_pair(in);
    const auto known = letters.find(letter);
    if (known == letters.end())
        throw std::runtime_error("unknown escape");
    return known->second;
}

std::string quoted(Scanner &in)
{
    std::string text;
    for (in.at++; in.more() && in.peek() != '"';) {
        const char c = in.text[in.at++];
        text += c == '\\' ? escape(in) : c;
    }
    if (!in.more())
        throw std::runtime_error("no closing quote");
    in.at++;
    return text;
}

using Names = std::map<std::string, std::string>;

std::string parse_bytes(const std::string &line, size_t start, const Names &names)
{
    Scanner in{line, start};
    std::string bytes;
    for (in.skip_blanks(); in.more() && in.peek() != ';'; in.skip_blanks()) {
        if (in.peek() == '"') {
            bytes += quoted(in);
        } else if (in.peek() == '{') {
            const size_t end = line.find('}', in.at);
            bytes += names.at(line.substr(in.at + 1, end - in.at - 1));
            in.at = end + 1;
        } else {
            const char byte = hex_pair(in);
            size_t count = 1;
            if (in.more() && in.peek() == '*') {
                size_t digits;
                count = std::stoul(line.substr(in.at + 1), &digits);
                in.at += 1 + digits;
            }
            bytes.append(count, byte);
        }
    }
    return bytes;
}

// A line's text, with its line end unless it ends in \c.
std::string parse_text(const std::string &line)
{
    Scanner in{line, line.size() > 1 ? size_t{2} : size_t{1}};
    std::string text;
    while (in.more()) {
        const char c = in.text[in.at++];
        if (c != '\\')
            text += c;
        else if (in.more() && in.peek() == 'c')
            return text;
        else
            text += escape(in);
    }
    return text + '\n';
}

std::vector<std::string> parse_words(const std::string &line)
{
    Scanner in{line, 1};
    std::vector<std::string> words;
    for (in.skip_blanks(); in.more(); in.skip_blanks()) {
        std::string word;
        while (in.more() && in.peek() != ' ')
            word += in.peek() == '"' ? quoted(in) : std::string(1, in.text[in.at++]);
        words.push_back(word);
    }
    return words;
}

void parse_let(const std::string &line, Names &names)
{
    const size_t end = line.find(' ', 4);
    const std::string name = line.substr(4, end - 4);
    const std::string bytes = parse_bytes(line, end + 3, names);
    if (line.at(end + 1) == '=')
        names[name] = bytes;
    else
        names.at(name) += bytes;
}

void parse_file(const std::string &line, Transcript &transcript)
{
    const size_t end = line.find(' ', 2);
    const std::string name = line.substr(2, end - 2);
    if (transcript.files.empty() || transcript.files.back().first != name)
        transcript.files.emplace_back(name, "");
    if (end != std::string::npos)
        transcript.files.back().second += line.substr(end + 1) + '\n';
}

void parse_line(const std::string &line, Transcript &transcript, Names &names)
{
    if (line.starts_with("let ")) {
        parse_let(line, names);
        return;
    }
    switch (line[0]) {
    case '#':
        if (transcript.comment.empty())
            transcript.comment = line.substr(1);
        break;
    case '$':
        transcript.words = parse_words(line);
        break;
    case '@':
        transcript.absent = line == "@ absent";
        if (!transcript.absent)
            transcript.handshake = parse_bytes(line, 1, names);
        break;
    case '>':
        transcript.steps.push_back({Step::expect, parse_bytes(line, 1, names)});
        break;
    case '<':
        if (line == "< close")
            transcript.steps.push_back({Step::hang_up, ""});
        else
            transcript.steps.push_back({Step::reply, parse_bytes(line, 1, names)});
        break;
    case '|':
        transcript.out += parse_text(line);
        break;
    case '!':
        transcript.err += parse_text(line);
        break;
    case '=':
        transcript.status = std::stoi(line.substr(1));
        break;
    case '+':
        parse_file(line, transcript);
        break;
    default:
        throw std::runtime_error("unknown kind of line");
    }
}

} // namespace

std::vector<Transcript> read_transcripts(const std::string &path)
{
    std::ifstream in(path);
    if (!in)
        throw std::runtime_error("cannot read " + path);
    const std::string file = path.substr(path.rfind('/') + 1);
    std::vector<Transcript> transcripts;
    Transcript current;
    Names names;
    const auto finish = [&] {
        if (current.status >= 0)
            transcripts.push_back(current);
        else if (!current.words.empty())
            throw std::runtime_error(file + ": a case without a status ends above its empty line");
        current = Transcript();
        current.file = file;
    };
    finish();
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        number++;
        if (line.empty()) {
            finish();
            continue;
        }
        if (current.line == 0)
            current.line = number;
        try {
            parse_line(line, current, names);
        } catch (const std::exception &error) {
            throw std::runtime_error(file + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    finish();
    return transcripts;
}
