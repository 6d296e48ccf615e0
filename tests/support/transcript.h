// SPDX-License-Identifier: MIT
// Transcripts: runs of zov against a scripted controller (see tests/transcripts/README.md).
#pragma once

#include <string>
#include <vector>

struct Step {
    enum Kind { expect, reply, hang_up } kind;
    std::string bytes;
};

struct Transcript {
    std::string file;
    int line = 0;        // of the paragraph
    std::string comment; // its first comment
    std::vector<std::string> words;
    bool absent = false; // nobody listens
    std::string handshake = std::string("\0\0\0\1", 4);
    std::vector<Step> steps;
    std::string out, err;
    int status = -1;
    std::vector<std::pair<std::string, std::string>> files; // name, content
};

// Reads a file's transcripts; throws std::runtime_error, naming the line, when one is malformed.
std::vector<Transcript> read_transcripts(const std::string &path);

struct PlayOptions {
    std::string zov;                      // the program
    std::vector<std::string> wrapper;     // what it is run under, such as valgrind
    std::vector<std::string> environment; // NAME=VALUE, added to ours
    bool one_byte_at_a_time = false;      // how the controller sends
};

struct Outcome {
    std::string out, err;
    int status = -1;                      // exit status, or 128 + signal
    std::string received;                 // what the controller received
    std::string complaint;                // what the controller had to complain about, or empty
    std::vector<std::string> left_behind; // temporary files of the run that are still there
};

// Runs zov in a new folder with the transcript's files, playing the controller.
Outcome play(const Transcript &transcript, const PlayOptions &options);
