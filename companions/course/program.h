// SPDX-License-Identifier: MIT
// How a tool that changes devices runs, and how it says what has become of them.
#pragma once

#include "course/driver.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <span>
#include <string>
#include <vector>

enum CourseStatus : int {
    ALL_DONE = 0,
    SOME_FAILED = 1,
    BAD_USAGE = 2,
    STOPPED = 3,
    SIGNALLED = 128
};

// Runs body(reporter), which gives the status, with the log and between its first and its last
// line; a signal before devices are changed ends it. `words` are those of the command line.
int run_with_log(const ProgramInfo &program, std::span<const std::string> words, const char *log,
                 const std::function<int(Reporter &)> &body);

// Why nothing is begun any more; `reason` where there is more to say.
std::string halt_text(Halt halted, const std::string &reason);

// "1 device", "2 devices".
std::string number_of(size_t count, const std::string &what);

// "2 done, 1 failed", in the order in which the texts come first.
std::string counts_text(const std::vector<std::string> &texts);

// The columns of the terminal that standard output is, 80 at least. Both print there.
size_t output_columns();
void print_lines(const std::vector<std::string> &lines);
void print_document(const nlohmann::ordered_json &document);
