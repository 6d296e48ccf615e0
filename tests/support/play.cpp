// SPDX-License-Identifier: MIT
#include "support/transcript.h"

#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

enum { PATIENCE_MS = 60000 };

struct Fd {
    int fd = -1;
    explicit Fd(int number) : fd(number) {}
    Fd(const Fd &) = delete;
    Fd &operator=(const Fd &) = delete;
    ~Fd() { reset(); }
    void reset()
    {
        if (fd >= 0)
            close(fd);
        fd = -1;
    }
};

struct Folder {
    std::string path;
    Folder()
    {
        char name[] = "/tmp/zov-test.XXXXXX";
        path = mkdtemp(name);
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    ~Folder() { fs::remove_all(path); }
};

int bind_to_free_port(const Fd &listener)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (bind(listener.fd, generic, size) != 0 || getsockname(listener.fd, generic, &size) != 0)
        throw std::runtime_error("no port to listen on");
    return ntohs(address.sin_port);
}

[[noreturn]] void run_zov(const Transcript &transcript, const PlayOptions &options, int port,
                          const std::string &folder)
{
    std::vector<std::string> words = options.wrapper;
    words.emplace_back("zov");
    words.insert(words.end(), transcript.words.begin(), transcript.words.end());
    if (!transcript.words.empty()) {
        const auto behind_command = words.begin() + static_cast<long>(options.wrapper.size()) + 2;
        words.insert(behind_command, {"--acport", std::to_string(port)});
    }
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    if (chdir((folder + "/run").c_str()) != 0 || freopen("/dev/null", "r", stdin) == nullptr ||
        freopen((folder + "/out").c_str(), "w", stdout) == nullptr ||
        freopen((folder + "/err").c_str(), "w", stderr) == nullptr)
        _exit(126);
    setenv("TZ", "UTC", 1);
    if (!options.wrapper
             .empty()) // it finds the program in PATH, by the name that the usage text shows
        setenv("PATH",
               (fs::path(options.zov).parent_path().string() + ":" + getenv("PATH")).c_str(), 1);
    for (const std::string &setting : options.environment)
        putenv(strdup(setting.c_str()));
    execvp(options.wrapper.empty() ? options.zov.c_str() : argv[0], argv.data());
    _exit(127);
}

// Waits for a client, or for the program to end without connecting.
int wait_for_client(int listener, pid_t child)
{
    for (int waited = 0; waited < PATIENCE_MS; waited += 5) {
        pollfd ready = {listener, POLLIN, 0};
        if (poll(&ready, 1, 5) > 0)
            return accept(listener, nullptr, nullptr);
        siginfo_t ended = {};
        if (waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
            ended.si_pid == child)
            return -1;
    }
    return -1;
}

// Waits for the program to end, and ends it when it does not. Returns its wait status.
int wait_for_end(pid_t child)
{
    int status = 0;
    for (int waited = 0; waited < PATIENCE_MS; waited++) {
        if (waitpid(child, &status, WNOHANG) == child)
            return status;
        usleep(1000);
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return status;
}

std::string receive(int client, size_t length)
{
    std::string bytes(length, '\0');
    size_t got = 0;
    while (got < length) {
        pollfd ready = {client, POLLIN, 0};
        if (poll(&ready, 1, PATIENCE_MS) <= 0)
            break;
        const ssize_t count = recv(client, bytes.data() + got, length - got, 0);
        if (count <= 0)
            break;
        got += static_cast<size_t>(count);
    }
    bytes.resize(got);
    return bytes;
}

void send_bytes(int client, const std::string &bytes, bool one_at_a_time)
{
    const size_t piece = one_at_a_time ? 1 : bytes.size();
    for (size_t at = 0; at < bytes.size();) {
        const ssize_t sent =
            send(client, bytes.data() + at, std::min(piece, bytes.size() - at), MSG_NOSIGNAL);
        if (sent <= 0)
            return;
        at += static_cast<size_t>(sent);
    }
}

std::string hex(const std::string &bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        text += digits[static_cast<unsigned char>(c) >> 4];
        text += digits[static_cast<unsigned char>(c) & 15];
    }
    return text;
}

// Plays the controller's lines. Returns a complaint, or nothing.
std::string serve(Fd &client, const Transcript &transcript, const PlayOptions &options,
                  std::string &received)
{
    const int on = 1;
    setsockopt(client.fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    send_bytes(client.fd, transcript.handshake, false);
    for (const Step &step : transcript.steps) {
        if (step.kind == Step::hang_up) {
            client.reset();
            return "";
        }
        if (step.kind == Step::reply) {
            send_bytes(client.fd, step.bytes, options.one_byte_at_a_time);
            continue;
        }
        const std::string got = receive(client.fd, step.bytes.size());
        received += got;
        if (got != step.bytes)
            return "request " + hex(got) + " instead of " + hex(step.bytes);
    }
    const bool admitted = transcript.handshake == std::string("\0\0\0\1", 4);
    const std::string rest = receive(client.fd, 1 << 20);
    received += rest;
    const std::string goodbye = admitted ? std::string(1, '\0') : "";
    return rest == goodbye ? "" : "at the end " + hex(rest) + " instead of " + hex(goodbye);
}

std::string read_file(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The temporary files that a run of zov with this process id may have forgotten.
std::vector<std::string> left_behind(pid_t pid)
{
    char hexadecimal[16];
    snprintf(hexadecimal, sizeof hexadecimal, "%x", static_cast<unsigned>(pid));
    std::vector<std::string> names;
    for (const std::string &name :
         {"/tmp/zov.ps." + std::to_string(pid), std::string("/tmp/zov.") + hexadecimal + ".pwd.tmp",
          std::string("/tmp/zov.") + hexadecimal + ".md5.tmp"})
        if (fs::exists(fs::symlink_status(name)))
            names.push_back(name);
    return names;
}

} // namespace

Outcome play(const Transcript &transcript, const PlayOptions &options)
{
    const Folder folder;
    fs::create_directory(folder.path + "/run");
    for (const auto &[name, content] : transcript.files)
        std::ofstream(folder.path + "/run/" + name, std::ios::binary) << content;

    Fd listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int port = bind_to_free_port(listener);
    if (!transcript.absent)
        listen(listener.fd, 1);

    const pid_t child = fork();
    if (child == 0)
        run_zov(transcript, options, port, folder.path);

    Outcome outcome;
    if (!transcript.absent) {
        Fd client(wait_for_client(listener.fd, child));
        if (client.fd >= 0)
            outcome.complaint = serve(client, transcript, options, outcome.received);
        else
            outcome.complaint = "no client came";
    }
    const int status = wait_for_end(child);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    outcome.left_behind = left_behind(child);
    outcome.out = read_file(folder.path + "/out");
    outcome.err = read_file(folder.path + "/err");
    return outcome;
}
