// SPDX-License-Identifier: MIT
#include "export/directory_output.h"

#include "common/command_line.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

static constexpr std::string_view PREFIX = ".zov-export.";

using DirectoryStream = std::unique_ptr<DIR, int (*)(DIR *)>;

// The entries of a directory that was opened with O_RDONLY or O_PATH.
static std::vector<std::string> names_in(const Descriptor &directory)
{
    std::vector<std::string> names;
    const int copy = openat(directory.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const DirectoryStream stream(copy < 0 ? nullptr : fdopendir(copy), closedir);
    while (const dirent *entry = stream ? readdir(stream.get()) : nullptr)
        names.emplace_back(entry->d_name);
    return names;
}

// "02-A3-00-00-00-01.json": all that such a subdirectory holds.
static bool is_document_name(std::string_view name)
{
    return name.size() == 22 && name.ends_with(".json") &&
           name.find_first_not_of("0123456789ABCDEF-") == name.find(".json");
}

static void remove_documents(const Descriptor &directory)
{
    for (const std::string &name : names_in(directory))
        if (is_document_name(name))
            unlinkat(directory.get(), name.c_str(), 0);
}

// Those of processes of the same user that are gone.
void DirectoryOutput::remove_leftovers()
{
    for (const std::string &name : names_in(directory_)) {
        pid_t process = 0;
        if (!name.starts_with(PREFIX) ||
            !take_number(name.c_str() + PREFIX.size(), 1, INT_MAX, process) ||
            kill(process, 0) == 0 || errno != ESRCH)
            continue;
        const Descriptor left(openat(directory_.get(), name.c_str(),
                                     O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        struct stat state = {};
        if (!left || fstat(left.get(), &state) != 0 || state.st_uid != geteuid())
            continue;
        remove_documents(left);
        unlinkat(directory_.get(), name.c_str(), AT_REMOVEDIR);
    }
}

DirectoryOutput::DirectoryOutput(const std::string &path)
    : path_(path), own_name_(std::string(PREFIX) + std::to_string(getpid())),
      directory_(open_directory(path))
{
    remove_leftovers();
    if (mkdirat(directory_.get(), own_name_.c_str(), 0700) == 0)
        own_ = Descriptor(openat(directory_.get(), own_name_.c_str(),
                                 O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!own_)
        throw Failure(with_reason("cannot create " + path_ + "/" + own_name_, errno));
}

DirectoryOutput::~DirectoryOutput()
{
    if (!own_)
        return;
    remove_documents(own_);
    unlinkat(directory_.get(), own_name_.c_str(), AT_REMOVEDIR);
}

void DirectoryOutput::report(const char *what, const std::string &name, int error)
{
    const std::string text =
        with_reason(std::string("cannot ") + what + " " + path_ + "/" + name, error);
    if (error == ENOSPC || error == EDQUOT)
        throw Failure(text);
    fprintf(stderr, "zov-export: %s\n", text.c_str());
    whole_ = false;
}

// Returns 0 or an errno.
int DirectoryOutput::write_file(const std::string &name, std::string_view contents)
{
    Descriptor file(openat(own_.get(), name.c_str(),
                           O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file)
        return errno;
    const Descriptor old(openat(directory_.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (old)
        take_over_mode(file.get(), old);
    const int error = write_all(file.get(), contents);
    return error != 0 ? error : file.close();
}

void DirectoryOutput::add(const std::string &name, std::string_view contents)
{
    const int error = write_file(name, contents);
    if (error == 0) {
        names_.push_back(name);
        return;
    }
    if (error != EEXIST)
        unlinkat(own_.get(), name.c_str(), 0);
    report("write", name, error);
}

bool DirectoryOutput::finish()
{
    if (syncfs(own_.get()) != 0)
        throw Failure(with_reason("cannot write to " + path_, errno));
    for (const std::string &name : names_)
        if (renameat(own_.get(), name.c_str(), directory_.get(), name.c_str()) != 0)
            report("replace", name, errno);
    const Descriptor directory(openat(directory_.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory || fsync(directory.get()) != 0)
        throw Failure(with_reason("cannot write to " + path_, errno));
    return whole_;
}
