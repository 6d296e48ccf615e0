// SPDX-License-Identifier: MIT
#include "apply/undo.h"

#include "apply/differences.h"
#include "apply/merge.h"
#include "common/address_text.h"
#include "common/device_names.h"
#include "common/output_file.h"
#include "common/plain_text.h"
#include "common/trusted_files.h"
#include "documents/value_json.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

using std::string;
using std::string_view;
using Json = nlohmann::ordered_json;

enum : mode_t {
    MODE_OWN_FILE = 0600,
    MODE_OWN_DIRECTORY = 0700,
    MODE_OF_OTHERS = 077,
    MODE_WRITE_OF_OTHERS = 022,
};

// --- Where it is ---------------------------------------------------------------------------------

// The time in UTC, with milliseconds.
static string time_text(const char *format)
{
    timespec now = {};
    tm parts = {};
    char text[32], fraction[8];
    clock_gettime(CLOCK_REALTIME, &now);
    gmtime_r(&now.tv_sec, &parts);
    snprintf(fraction, sizeof fraction, ".%03dZ", static_cast<int>(now.tv_nsec / 1'000'000));
    return string(text, strftime(text, sizeof text, format, &parts)) + fraction;
}

static string state_directory()
{
    const char *state = getenv("XDG_STATE_HOME"), *home = getenv("HOME");
    if (state != nullptr && *state == '/')
        return string(state) + "/zov";
    if (home != nullptr && *home == '/')
        return string(home) + "/.local/state/zov";
    throw UsageError("--save or --no-save is needed where neither XDG_STATE_HOME nor HOME is set");
}

string undo_path(const ApplySettings &settings)
{
    if (settings.no_save)
        return "";
    if (settings.save != nullptr)
        return settings.save;
    return state_directory() + "/undo-" + settings.address + "-" + std::to_string(settings.port) +
           "-" + time_text("%Y%m%dT%H%M%S") + ".json";
}

// The directory of the state, and those above it, are made for the caller alone.
static void make_state_directory(const string &path)
{
    for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const string above = path.substr(0, slash);
        if (mkdir(above.c_str(), MODE_OWN_DIRECTORY) != 0 && errno != EEXIST)
            throw Failure(with_reason("cannot make " + above, errno));
        if (slash == string::npos)
            break;
    }
    const Descriptor directory = open_directory(path);
    struct stat found = {};
    if (fstat(directory.get(), &found) != 0)
        throw Failure(with_reason("cannot look at " + path, errno));
    if (found.st_uid != geteuid() || (found.st_mode & MODE_OF_OTHERS) != 0)
        throw Failure(path + " is open to other users: it has to be yours, with mode 0700");
}

// --- Writing -------------------------------------------------------------------------------------

static string hex_of(string_view bytes)
{
    static constexpr char DIGITS[] = "0123456789abcdef";
    string text;
    for (const char byte : bytes) {
        text += DIGITS[static_cast<uint8_t>(byte) >> 4];
        text += DIGITS[static_cast<uint8_t>(byte) & 15];
    }
    return text;
}

// The saved settings as a reader wants them, without secrets.
static Json texts_of(const SavedDevice &device)
{
    const ConfigRow nothing(setting_table(device.kind));
    const ConfigRow row = row_of_items(device.items, device.kind);
    Json texts = Json::object();
    for (const Difference &one : compare(nothing, row, device.kind))
        if (one.column->table == nullptr)
            texts[one.path] = value_text_of(*one.column, device.kind, one.to);
    return texts;
}

static Json json_of(const SavedDevice &device)
{
    return {{"mac", mac_name(device.mac)},
            {"name", device.name},
            {"kind", kind_name(device.kind)},
            {"items", hex_of(device.items)},
            {"settings", texts_of(device)}};
}

static string dumped(const Json &json)
{
    return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

// The whole file, piece by piece.
template <class Put>
static void put_file(const ApplySettings &settings, const std::vector<SavedDevice> &devices,
                     Put put)
{
    put("{\n\"document\": \"undo\",\n\"controller\": " +
        dumped(settings.address + (":" + std::to_string(settings.port))) + ",\n\"time\": \"" +
        time_text("%Y-%m-%dT%H:%M:%S") + "\",\n\"devices\": [\n");
    for (size_t i = 0; i < devices.size(); i++)
        put((i == 0 ? "" : ",\n") + dumped(json_of(devices[i])));
    put("\n]}\n");
}

static int write_file(const Descriptor &file, const ApplySettings &settings,
                      const std::vector<SavedDevice> &devices)
{
    int error = 0;
    put_file(settings, devices, [&](const string &piece) {
        if (error == 0)
            error = write_all(file.get(), piece);
    });
    return error == 0 && fsync(file.get()) != 0 ? errno : error;
}

void rewrite_undo(const string &path, const ApplySettings &settings,
                  const std::vector<SavedDevice> &devices)
{
    OutputFile file(path.c_str(), MODE_OWN_FILE);
    put_file(settings, devices, [&](const string &piece) { file.put(piece); });
    file.finish();
}

void write_undo(const string &path, const ApplySettings &settings,
                const std::vector<SavedDevice> &devices)
{
    const size_t slash = path.rfind('/');
    const string above = slash == string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    if (settings.save == nullptr)
        make_state_directory(above);
    const Descriptor found = find_file(AT_FDCWD, above, above); // through no link of others
    const Descriptor directory(found ? openat(found.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)
                                     : -1);
    if (!directory)
        throw Failure(with_reason("cannot open " + above, errno));
    const string name = path.substr(slash == string::npos ? 0 : slash + 1);
    Descriptor file(openat(directory.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                           MODE_OWN_FILE));
    if (!file)
        throw Failure(with_reason("cannot make " + path, errno));
    int error = write_file(file, settings, devices);
    if (error == 0)
        error = file.close();
    if (error == 0 && fsync(directory.get()) != 0)
        error = errno;
    if (error == 0)
        return;
    unlinkat(directory.get(), name.c_str(), 0);
    throw Failure(with_reason("cannot write " + path, error));
}

// --- Reading -------------------------------------------------------------------------------------

static string bytes_of_hex(const string &text)
{
    if (text.size() % 2 != 0 || text.find_first_not_of("0123456789abcdef") != string::npos)
        throw UsageError("bad hexadecimal digits");
    string bytes;
    for (size_t i = 0; i < text.size(); i += 2)
        bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
    return bytes;
}

static Document document_of(const Json &device, const char *path, Mac &mac)
{
    Document made;
    made.name = path;
    made.role = Document::undo;
    const string kind = device.at("kind");
    made.kind = kind == kind_name(DEVICE_SWITCH) ? DEVICE_SWITCH : DEVICE_ACCESS_POINT;
    made.items = bytes_of_hex(device.at("items"));
    if (kind != kind_name(made.kind) || !parse_mac(device.at("mac").get<string>().c_str(), mac) ||
        !are_items_of(made.kind, made.items))
        throw UsageError("bad device");
    return made;
}

// What is for readers only is not kept.
static bool without_texts(int, Json::parse_event_t event, Json &parsed)
{
    return event != Json::parse_event_t::key || parsed != "settings";
}

static string text_of_file(const char *path)
{
    const Descriptor file(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat found = {};
    if (!file || fstat(file.get(), &found) != 0)
        throw UsageError(with_reason(string("cannot open ") + path, errno));
    const bool is_safe = (found.st_uid == geteuid() || found.st_uid == 0) &&
                         (found.st_mode & MODE_WRITE_OF_OTHERS) == 0;
    if (!S_ISREG(found.st_mode) || !is_safe)
        throw UsageError(string(path) + " is no regular file that you alone can write to");
    string text(static_cast<size_t>(found.st_size), '\0');
    if (read(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        throw UsageError(string("cannot read ") + path);
    return text;
}

Sources read_undo(const ApplySettings &settings)
{
    const string path = settings.undo;
    const string text = text_of_file(settings.undo);
    const string controller = settings.address + (":" + std::to_string(settings.port));
    Sources sources;
    try {
        const Json document = Json::parse(text, without_texts);
        if (document.at("document") != "undo" || document.at("devices").empty())
            throw UsageError("another document");
        if (document.at("controller") != controller)
            sources.notes.push_back(path + " was saved from the controller at " +
                                    document.at("controller").get<string>());
        for (const Json &device : document.at("devices")) {
            Mac mac;
            Document made = document_of(device, settings.undo, mac);
            if (!sources.own.emplace(mac, std::vector{std::move(made)}).second)
                throw UsageError("a device twice");
        }
    } catch (const std::exception &) {
        throw UsageError(path + " is no undo file, or not all of one");
    }
    return sources;
}
