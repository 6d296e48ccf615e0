// SPDX-License-Identifier: MIT
// Writes seeds for the fuzz targets: make_seeds TRANSCRIPT_FOLDER EXAMPLE_FOLDER SEED_FOLDER
//
// Replies to list requests become seeds of list_reply, configuration files seeds of config_file.
#include "support/transcript.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

static void write(const fs::path &folder, const std::string &content)
{
    static int number = 0;
    fs::create_directories(folder);
    std::ofstream file(folder / std::to_string(number++), std::ios::binary);
    if (!(file << content).flush())
        throw std::runtime_error("cannot write to " + folder.string());
}

int main(int argc, char **argv)
{
    if (argc != 4)
        return 2;
    const fs::path seeds = argv[3];
    for (const auto &entry : fs::directory_iterator(argv[1])) {
        if (entry.path().extension() != ".txt")
            continue;
        for (const Transcript &transcript : read_transcripts(entry.path())) {
            if (!transcript.words.empty() && transcript.words[0] == "wtps") {
                std::string reply;
                for (const Step &step : transcript.steps)
                    if (step.kind == Step::reply)
                        reply += step.bytes;
                write(seeds / "list_reply", reply);
            }
            for (const auto &[name, content] : transcript.files)
                if (name.ends_with(".json"))
                    for (const char *kind : {"0", "1"})
                        write(seeds / "config_file", kind + content);
        }
    }
    for (const auto &entry : fs::directory_iterator(argv[2])) {
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string content{std::istreambuf_iterator<char>(in), {}};
        for (const char *kind : {"0", "1"})
            write(seeds / "config_file", kind + content);
    }
    return 0;
}
