// SPDX-License-Identifier: MIT
#include "course/program.h"

#include "common/output_file.h"
#include "common/plain_text.h"
#include "common/stop.h"

#include <algorithm>
#include <unistd.h>

int run_with_log(const ProgramInfo &program, std::span<const std::string> words, const char *path,
                 const std::function<int(Reporter &)> &body)
{
    const EventLog log(path, program.name);
    watch_for_stop();
    stop_at_first(true);
    ProgressBar bar(program.name);
    Reporter reporter(log, bar);
    try {
        log.add(opening_text(program.name, words));
    } catch (const Failure &) {
        if (!stop_wanted())
            throw;
        bar.line("stopped by a signal; nothing was begun");
        return STOPPED;
    }
    const auto ended = [&](int status) {
        reporter.write_log("status " + std::to_string(status));
        return status == ALL_DONE && reporter.log_failed() ? int{SOME_FAILED} : status;
    };
    try {
        return ended(body(reporter));
    } catch (const StopAtOnce &) {
        reporter.warn("stopped by a signal; nothing was begun");
        return ended(STOPPED);
    } catch (const Failure &failure) {
        reporter.write_log(failure.what());
        ended(SOME_FAILED);
        throw;
    } catch (const UsageError &error) {
        reporter.write_log(error.what());
        ended(BAD_USAGE);
        throw;
    }
}

std::string halt_text(Halt halted, const std::string &reason)
{
    switch (halted) {
    case Halt::signal:
        return "stopped by a signal";
    case Halt::failures:
        return "stopped: too many failures";
    case Halt::silence:
        return "stopped: the controller did not answer";
    case Halt::log:
        return "stopped: the log cannot be written";
    case Halt::differs:
        return "stopped: " + plain_text(reason);
    case Halt::none:
        break;
    }
    return "";
}

std::string number_of(size_t count, const std::string &what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string counts_text(const std::vector<std::string> &texts)
{
    std::vector<std::pair<std::string, size_t>> counts;
    for (const std::string &one : texts) {
        auto found = std::find_if(counts.begin(), counts.end(),
                                  [&](const auto &count) { return count.first == one; });
        if (found == counts.end())
            found = counts.insert(found, {one, 0});
        found->second++;
    }
    std::string text;
    for (const auto &[one, number] : counts)
        text += (text.empty() ? "" : ", ") + std::to_string(number) + " " + one;
    return text;
}

size_t output_columns()
{
    enum : size_t { COLUMNS_MIN = 80 };
    return isatty(STDOUT_FILENO) != 0
               ? std::max<size_t>(columns_of(STDOUT_FILENO), size_t{COLUMNS_MIN})
               : size_t{COLUMNS_MIN};
}

void print_lines(const std::vector<std::string> &lines)
{
    OutputFile out("-", 0);
    for (const std::string &line : lines)
        out.put(line + "\n");
    out.finish();
}

void print_document(const nlohmann::ordered_json &document)
{
    OutputFile out("-", 0);
    out.put(document.dump(2, ' ', true, nlohmann::ordered_json::error_handler_t::replace) + "\n");
    out.finish();
}
