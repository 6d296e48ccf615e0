// SPDX-License-Identifier: MIT
#include "config/password_digest.h"

#include "util/shell.h"
#include "util/temp_file.h"
#include "util/text.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

static int write_password(TempFile &file, const char *password, const Messages &messages)
{
    const size_t length = strlen(password);
    Text line;
    if (line.allocate(length + 1) == nullptr)
        return messages.report(Cause::no_memory, 0, "ERROR: Out of memory.\n");
    memcpy(line.data(), password, length);
    line.data()[length] = '\n';
    if (!file.write(line.data(), length + 1))
        return messages.report("ERROR: write '%s' failed.\n", file.path());
    return 0;
}

static unsigned digit_value(char digit)
{
    return static_cast<unsigned>(digit <= '9' ? digit - '0' : digit - 'a' + 10);
}

static int read_digest(const char *path, uint8_t digest[16], const Messages &messages)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(path, "re"), fclose);
    if (file == nullptr)
        return messages.report("ERROR: open '%s' failed.\n", path);
    char text[128];
    if (fread(text, 1, sizeof text, file.get()) < 32)
        return messages.report("ERROR: read '%s' failed.\n", path);
    const char *digits = text;
    for (int i = 0; i < 16; i++, digits += 2)
        digest[i] = static_cast<uint8_t>(digit_value(digits[0]) << 4 | digit_value(digits[1]));
    return 0;
}

static int cannot_create(const char *path, const Messages &messages)
{
    return messages.report("ERROR: create '%s' failed.\n", path);
}

int password_digest(const char *password, uint8_t digest[16], const Messages &messages)
{
    char password_path[32], digest_path[32];
    const auto pid = static_cast<unsigned>(getpid());
    snprintf(password_path, sizeof password_path, "/tmp/zov.%x.pwd.tmp", pid);
    snprintf(digest_path, sizeof digest_path, "/tmp/zov.%x.md5.tmp", pid);

    TempFile password_file(password_path);
    const TempFile digest_file(digest_path);
    if (!password_file.created())
        return cannot_create(password_path, messages);
    if (!digest_file.created())
        return cannot_create(digest_path, messages);
    if (write_password(password_file, password, messages) != 0)
        return 1;

    char command[128];
    snprintf(command, sizeof command, "md5sum %s > %s", password_path, digest_path);
    return execute(command, messages) == 0 ? read_digest(digest_path, digest, messages) : 1;
}
