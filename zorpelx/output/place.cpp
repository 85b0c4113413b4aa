// SPDX-License-Identifier: MIT
/* zorpelx/output/place.cpp: where an output goes, found once, before anything is done.
 *
 * A name is a folder and a last name in it. If the last one is a symbolic link its target is the
 * next name, relative to that folder; at the end stands something that is no link, or nothing yet.
 * Links in the process file system stand for open files: what they lead to is written through the
 * descriptor, at the place where that is, and never by its name.
 */
#include "place.h"

#include <cassert>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

constexpr int MOST_LINKS = 40; // as the system has it

bool link_is_trusted(const struct stat &folder, const struct stat &link, uid_t follower)
{
    const bool shared = (folder.st_mode & S_ISVTX) != 0 && (folder.st_mode & S_IWOTH) != 0;
    return !shared || link.st_uid == follower || link.st_uid == folder.st_uid;
}

/* Whether the system is set to protect links; where it does not say, it is. */
static bool protects_links()
{
    FILE *const setting = fopen("/proc/sys/fs/protected_symlinks", "re");
    if (setting == nullptr) return true;
    const int answer = fgetc(setting);
    fclose(setting);
    return answer != '0';
}

/* The system itself follows the name: refusals of its own, such as a loop, count. */
static int error_of_following(const std::string &name)
{
    const int file = open(name.c_str(), O_PATH | O_CLOEXEC);
    if (file < 0) return errno == ENOENT ? 0 : errno;
    close(file);
    return 0;
}

/* Descriptors of ours never become a standard stream that is closed. */
static int open_folder(int base, const std::string &path)
{
    const int low = openat(base, path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (low < 0 || low > STDERR_FILENO) return low;
    const int high = fcntl(low, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(low);
    errno = error;
    return high;
}

/* "a/b/c" is c in "a/b/."; a link in the middle of a path stays in the middle. */
static int enter_folder_of(const std::string &name, FilePlace *place)
{
    const size_t slash = name.rfind('/');
    place->last = slash == std::string::npos ? name : name.substr(slash + 1);
    if (place->last.empty() || place->last == "." || place->last == "..")
        return name.empty() ? ENOENT : EISDIR;
    const std::string folder = slash == std::string::npos ? "." : name.substr(0, slash + 1) + ".";
    const int entered = open_folder(place->folder < 0 ? AT_FDCWD : place->folder, folder);
    if (entered < 0) return errno;
    if (place->folder >= 0) close(place->folder);
    place->folder = entered;
    return fstat(entered, &place->in) == 0 ? 0 : errno;
}

static bool same_inode(const struct stat &a, const struct stat &b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/* Whether the folder lists the descriptors of this process, or of this thread, which are the
 * same. */
static bool lists_our_descriptors(const struct stat &folder)
{
    for (const char *name : {"/proc/self/fd", "/proc/thread-self/fd"}) {
        struct stat ours;
        if (stat(name, &ours) == 0 && same_inode(folder, ours)) return true;
    }
    return false;
}

static bool is_process_folder(int folder)
{
    struct statfs system;
    return fstatfs(folder, &system) == 0 && system.f_type == PROC_SUPER_MAGIC;
}

static int stream_place(int descriptor, FilePlace *place)
{
    release_place(place);
    place->kind = PLACE_STREAM;
    place->descriptor = descriptor;
    place->exists = true;
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags < 0 || fstat(descriptor, &place->old) != 0) return errno;
    return (flags & O_ACCMODE) == O_RDONLY ? EBADF : 0;
}

static int place_in_process_folder(FilePlace *place)
{
    char *end = nullptr;
    const long number = strtol(place->last.c_str(), &end, 10);
    if (*end == '\0' && number >= 0 && number <= INT_MAX && lists_our_descriptors(place->in))
        return stream_place(static_cast<int>(number), place);
    place->kind = PLACE_DEVICE;
    place->exists = true;
    return fstatat(place->folder, place->last.c_str(), &place->old, 0) == 0 ? 0 : errno;
}

static int error_of_type(mode_t mode)
{
    if (S_ISDIR(mode)) return EISDIR;
    return S_ISSOCK(mode) ? ENXIO : 0;
}

/* What stands at folder and last, which is no link. */
static int settle(FilePlace *place)
{
    place->exists = true;
    place->kind = S_ISREG(place->old.st_mode) ? PLACE_FILE : PLACE_DEVICE;
    return error_of_type(place->old.st_mode);
}

/* The target of the link at the place. */
static int read_link(const FilePlace &place, std::string *target)
{
    char bytes[PATH_MAX];
    const ssize_t length = readlinkat(place.folder, place.last.c_str(), bytes, sizeof bytes);
    if (length < 0) return errno;
    if (static_cast<size_t>(length) == sizeof bytes) return ENAMETOOLONG;
    target->assign(bytes, static_cast<size_t>(length));
    return 0;
}

static int follow(std::string name, FilePlace *place)
{
    const bool careful = protects_links();
    for (int n = 0; n <= MOST_LINKS; n++) {
        if (const int error = enter_folder_of(name, place)) return error;
        if (is_process_folder(place->folder)) return place_in_process_folder(place);
        if (fstatat(place->folder, place->last.c_str(), &place->old, AT_SYMLINK_NOFOLLOW) != 0)
            return errno == ENOENT ? 0 : errno; // a new file
        if (!S_ISLNK(place->old.st_mode)) return settle(place);
        if (careful && !link_is_trusted(place->in, place->old, geteuid())) return EACCES;
        if (const int error = read_link(*place, &name)) return error;
    }
    return ELOOP;
}

int find_place(const std::string &name, FilePlace *place)
{
    *place = FilePlace();
    if (name == "-") return stream_place(STDOUT_FILENO, place);
    if (const int error = error_of_following(name)) return error;
    const int error = follow(name, place);
    assert(error != 0 || (place->kind == PLACE_STREAM) == (place->folder < 0)); // P1, P2
    return error;
}

void release_place(FilePlace *place)
{
    if (place->folder >= 0) close(place->folder);
    place->folder = -1;
}

bool is_one_place(const FilePlace &a, const FilePlace &b)
{
    if (a.kind == PLACE_STREAM && b.kind == PLACE_STREAM && a.descriptor == b.descriptor)
        return true;
    if (a.exists && b.exists) return !S_ISCHR(a.old.st_mode) && same_inode(a.old, b.old);
    return a.kind == PLACE_FILE && b.kind == PLACE_FILE && same_inode(a.in, b.in) &&
           a.last == b.last;
}

bool is_stream_name(const std::string &name)
{
    if (name == "-") return true;
    struct stat status;
    if (stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) return true;
    FilePlace place;
    follow(name, &place);
    const bool stream =
        place.kind == PLACE_STREAM || (place.folder >= 0 && is_process_folder(place.folder));
    release_place(&place);
    return stream;
}
