// SPDX-License-Identifier: MIT
/* zorpelx/output/newfile.cpp: the file that is to take a place, while it has no name there.
 *
 * A nameless file (O_TMPFILE) needs no clearing up: it goes with its descriptor, whatever ends the
 * process. It gets a name through the link that the process file system shows for it. A name that
 * is taken cannot be given, so the file that replaces another gets a name beside it for the moment
 * between two system calls.
 */
#include "newfile.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/random.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

constexpr mode_t NEW_FILE_MODE = 0666; // less what the umask takes
constexpr mode_t RIGHTS = 0777;        // without those to run as owner or group
constexpr int MOST_NAMES = 100;        // tried beside a place
constexpr char ACCESS_LIST[] = "system.posix_acl_access";

static bool is_mount_point(const FilePlace &place)
{
    struct statx more;
    return statx(place.folder, place.last.c_str(), AT_SYMLINK_NOFOLLOW, 0, &more) == 0 &&
           (more.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

/* In a folder where all may write, a file is renamed over by its owner or the folder's only. */
static bool is_held_by_folder(const FilePlace &place)
{
    const uid_t self = geteuid();
    return (place.in.st_mode & S_ISVTX) != 0 && self != 0 && place.old.st_uid != self &&
           place.in.st_uid != self;
}

int error_of_replacing(const FilePlace &place)
{
    if (faccessat(place.folder, ".", W_OK | X_OK, AT_EACCESS) != 0) return errno;
    if (!place.exists) return 0;
    if (faccessat(place.folder, place.last.c_str(), W_OK, AT_EACCESS) != 0) return errno;
    if (is_held_by_folder(place)) return EPERM;
    return is_mount_point(place) ? EBUSY : 0;
}

/* Never a standard stream that is closed. */
static int above_streams(int file)
{
    if (file < 0 || file > STDERR_FILENO) return file;
    const int high = fcntl(file, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(file);
    errno = error;
    return high;
}

/* The link that stands for an open file. */
static std::string link_of(int file)
{
    return "/proc/self/fd/" + std::to_string(file);
}

static bool knows_no_nameless_files(int error)
{
    return error == EOPNOTSUPP || error == EISDIR || error == EINVAL;
}

int create_nameless(const FilePlace &place, int *file)
{
    *file =
        above_streams(openat(place.folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, NEW_FILE_MODE));
    if (*file < 0) return knows_no_nameless_files(errno) ? 0 : errno;
    if (access(link_of(*file).c_str(), F_OK) == 0) return 0;
    close(*file); // it could never get a name
    *file = -1;
    return 0;
}

static std::string name_beside()
{
    uint64_t number = 0;
    if (getrandom(&number, sizeof number, GRND_NONBLOCK) != sizeof number)
        number = static_cast<uint64_t>(getpid());
    char name[32];
    snprintf(name, sizeof name, ".zorpelx-%016llx", static_cast<unsigned long long>(number));
    return name;
}

int create_beside(const FilePlace &place, std::string *beside, int *file)
{
    for (int n = 0; n < MOST_NAMES; n++) {
        *beside = name_beside();
        *file = above_streams(openat(place.folder, beside->c_str(),
                                     O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC | O_NOFOLLOW,
                                     NEW_FILE_MODE));
        if (*file >= 0) return 0;
        if (errno != EEXIST) break;
    }
    const int error = errno;
    beside->clear();
    return error;
}

/* The access list goes along, or the mode would give its mask to the group. */
static int copy_access_list(int from, int to)
{
    ssize_t size = fgetxattr(from, ACCESS_LIST, nullptr, 0);
    if (size <= 0) { // there is none; what the folder gave the new file goes too
        fremovexattr(to, ACCESS_LIST);
        return 0;
    }
    std::vector<char> list(static_cast<size_t>(size));
    size = fgetxattr(from, ACCESS_LIST, list.data(), list.size());
    if (size < 0) return errno;
    return fsetxattr(to, ACCESS_LIST, list.data(), static_cast<size_t>(size), 0) == 0 ? 0 : errno;
}

static int take_access_list(const FilePlace &place, int file)
{
    const int old = openat(place.folder, place.last.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (old < 0) return errno == EACCES ? 0 : errno; // a file that may be written but not read
    const int error = copy_access_list(old, file);
    close(old);
    return error;
}

int take_rights(const FilePlace &place, int file)
{
    if (!place.exists) return 0;
    struct stat now;
    if (fstat(file, &now) != 0) return errno;
    const bool same = now.st_uid == place.old.st_uid && now.st_gid == place.old.st_gid;
    if (!same && fchown(file, place.old.st_uid, place.old.st_gid) != 0) return errno;
    if (const int error = take_access_list(place, file)) return error;
    return fchmod(file, place.old.st_mode & RIGHTS) == 0 ? 0 : errno;
}

static int wait_until_ready(int file)
{
    pollfd ready = {file, POLLOUT, 0};
    return poll(&ready, 1, -1) >= 0 || errno == EINTR ? 0 : errno;
}

int write_all(int file, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t wrote = write(file, content.data(), content.size());
        if (wrote >= 0) {
            content.remove_prefix(static_cast<size_t>(wrote));
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (const int error = wait_until_ready(file)) return error;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int fill_file(int file, std::string_view content)
{
    if (lseek(file, 0, SEEK_SET) < 0 || ftruncate(file, 0) != 0) return errno;
    if (const int error = write_all(file, content)) return error;
    return fsync(file) == 0 ? 0 : errno;
}

static int link_as(int file, const FilePlace &place, const std::string &name)
{
    return linkat(AT_FDCWD, link_of(file).c_str(), place.folder, name.c_str(), AT_SYMLINK_FOLLOW) ==
                   0
               ? 0
               : errno;
}

int name_file(int file, const FilePlace &place)
{
    return link_as(file, place, place.last);
}

int name_file_beside(int file, const FilePlace &place, std::string *beside)
{
    int error = EEXIST;
    for (int n = 0; n < MOST_NAMES && error == EEXIST; n++) {
        *beside = name_beside();
        error = link_as(file, place, *beside);
    }
    if (error != 0) beside->clear();
    return error;
}
