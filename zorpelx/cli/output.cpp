/* zorpelx/cli/output.cpp: files that are written whole or not at all. */
#include "output.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "failure.h"

constexpr mode_t NEW_FILE_MODE = 0666; // less what the umask takes

static bool same_file(const std::string &a, const std::string &b)
{
    if (a.empty() || b.empty() || a == "-" || b == "-") return false;
    struct stat first, second;
    if (stat(a.c_str(), &first) != 0 || stat(b.c_str(), &second) != 0) return a == b;
    return S_ISREG(first.st_mode) && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

void check_outputs(const std::vector<std::string> &outputs, const std::vector<std::string> &inputs)
{
    for (size_t i = 0; i < outputs.size(); i++) {
        for (const std::string &input : inputs)
            if (same_file(outputs[i], input))
                fail(STATUS_USAGE, "%s is read, and would be overwritten", outputs[i].c_str());
        for (size_t j = 0; j < i; j++)
            if (same_file(outputs[i], outputs[j]))
                fail(STATUS_USAGE, "%s would be written twice", outputs[i].c_str());
    }
}

std::string shown_output(const std::string &name)
{
    return name == "-" ? "standard output" : name;
}

[[noreturn]] static void output_failed(const std::string &name, int error)
{
    fail(STATUS_IO, "cannot write %s: %s", shown_output(name).c_str(), strerror(error));
}

/* 0, or the error. */
static int write_bytes(int file, const std::string &content)
{
    for (size_t done = 0; done < content.size();) {
        const ssize_t wrote = write(file, content.data() + done, content.size() - done);
        if (wrote < 0 && errno != EINTR) return errno;
        if (wrote > 0) done += static_cast<size_t>(wrote);
    }
    return 0;
}

/* With a slash at its end. */
static std::string folder_of(const std::string &name)
{
    const size_t slash = name.rfind('/');
    return slash == std::string::npos ? "./" : name.substr(0, slash + 1);
}

/* Where the file really is, or is to be: the end of symbolic links, if any. */
static std::string real_place(const std::string &name)
{
    constexpr int MOST_LINKS = 40; // as the system has it
    char *const resolved = realpath(name.c_str(), nullptr);
    std::string place = resolved != nullptr ? resolved : name;
    free(resolved);
    if (resolved != nullptr) return place;
    char target[PATH_MAX];
    for (int n = 0; n < MOST_LINKS; n++) { // a link to what is not there yet
        const ssize_t length = readlink(place.c_str(), target, sizeof target);
        if (length < 0) return place;
        const std::string next(target, static_cast<size_t>(length));
        place = next[0] == '/' ? next : folder_of(place) + next;
    }
    output_failed(name, ELOOP);
}

/* The mode that the file has, or that a new one would get. */
static mode_t mode_for(const struct stat *old)
{
    if (old != nullptr) return old->st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return NEW_FILE_MODE & ~mask;
}

/* Not every file system syncs a folder: the rename stands all the same. */
static void sync_folder(const std::string &folder)
{
    const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0) return;
    fsync(file);
    close(file);
}

static int fill_and_close(int file, mode_t mode, const std::string &content)
{
    int error = write_bytes(file, content);
    if (error == 0 && fchmod(file, mode) != 0) error = errno;
    if (error == 0 && fsync(file) != 0) error = errno;
    if (close(file) != 0 && error == 0) error = errno;
    return error;
}

static void replace_file(const std::string &place, mode_t mode, const std::string &content)
{
    std::string temporary = place + ".XXXXXX";
    const int file = mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0) output_failed(place, errno);
    int error = fill_and_close(file, mode, content);
    if (error == 0 && rename(temporary.c_str(), place.c_str()) != 0) error = errno;
    if (error != 0) {
        unlink(temporary.c_str());
        output_failed(place, error);
    }
    sync_folder(folder_of(place));
}

static void write_into(const std::string &name, const std::string &content)
{
    const int file = open(name.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) output_failed(name, errno);
    int error = write_bytes(file, content);
    if (close(file) != 0 && error == 0) error = errno;
    if (error != 0) output_failed(name, error);
}

void write_whole(const std::string &name, const std::string &content)
{
    if (name == "-") {
        fwrite(content.data(), 1, content.size(), stdout);
        flush_output();
        return;
    }
    struct stat old;
    const bool exists = stat(name.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) return write_into(name, content);
    replace_file(real_place(name), mode_for(exists ? &old : nullptr), content);
}

void flush_output()
{
    if (fflush(stdout) != 0 || ferror(stdout)) output_failed("-", errno);
}
