/* SPDX-License-Identifier: MIT */
/* zorpelx/output/place.h: where an output goes, found once, before anything is done.
 *
 * A name is followed as the system follows it, link by link, and what is found is kept open: the
 * folder and the last name in it. From then on nothing depends on the name as it was given, so
 * links that change meanwhile lead nowhere else.
 */
#ifndef ZORPELX_OUTPUT_PLACE_H
#define ZORPELX_OUTPUT_PLACE_H

#include <string>
#include <sys/stat.h>

enum PlaceKind {
    PLACE_FILE,   // a regular file, there or not yet: written beside it and renamed
    PLACE_STREAM, // a descriptor that the process has open: written where it stands
    PLACE_DEVICE  // a device, a FIFO or a descriptor of another process: opened and written
};

/* Invariants:
 *   P1  kind PLACE_STREAM: descriptor is what the name stands for, and folder is -1
 *   P2  otherwise: folder is open, and folder and last name the place, which is no symbolic link
 *   P3  exists: old is what stands there; for PLACE_STREAM and PLACE_DEVICE it does
 */
struct FilePlace {
    PlaceKind kind = PLACE_FILE;
    int folder = -1;     // descriptor of the folder, for use in paths only; owned
    std::string last;    // the name in it, without a slash
    int descriptor = -1; // of a stream; not owned
    bool exists = false;
    struct stat old = {};
    struct stat in = {}; // the folder itself
};

/* Finds the place of an output. "-" is standard output.
 *   place  out: released by release_place(), also after an error
 * Returns 0, or the error number that says why nothing can be written there. */
int find_place(const std::string &name, FilePlace *place);

void release_place(FilePlace *place);

/* Whether two outputs would be one: the same descriptor, the same name in the same folder, or the
 * same file under two names. A character device may be written twice. */
bool is_one_place(const FilePlace &a, const FilePlace &b);

/* Whether the name of an output or of an input stands for a stream of this process or for
 * something that is no regular file, such as /dev/stdin or a FIFO. */
bool is_stream_name(const std::string &name);

/* Whether the system follows a symbolic link: in a folder where everybody may write, but remove
 * only what is theirs, not if it is neither the follower's nor the folder owner's. */
bool link_is_trusted(const struct stat &folder, const struct stat &link, uid_t follower);

#endif
