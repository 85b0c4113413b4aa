/* SPDX-License-Identifier: MIT */
/* zorpelx/output/newfile.h: the file that is to take a place, while it has no name there. */
#ifndef ZORPELX_OUTPUT_NEWFILE_H
#define ZORPELX_OUTPUT_NEWFILE_H

#include <string>
#include <string_view>

#include "place.h"

/* All return 0 or an error number. */

/* Whether a file may take the place: the folder can be written, and what stands there is the
 * caller's to replace. */
int error_of_replacing(const FilePlace &place);

/* A file without a name in the folder of the place.
 *   file  out: its descriptor; -1, and no error, where the file system knows none */
int create_nameless(const FilePlace &place, int *file);

/* A file under a name of its own beside the place, for file systems that know no other.
 *   beside  out: the name */
int create_beside(const FilePlace &place, std::string *beside, int *file);

/* Makes the file take the owner, the permissions and the access list of what stands at the place,
 * less the rights to run as its owner or group; a new file keeps what it was created with. */
int take_rights(const FilePlace &place, int file);

/* Makes the content the file's own, and puts it on the disk. */
int fill_file(int file, std::string_view content);

/* Writes to a stream or a device; one that is not ready is waited for. */
int write_all(int file, std::string_view content);

/* Gives a nameless file a name: the last one of the place, or one beside it.
 *   beside  out: that name */
int name_file(int file, const FilePlace &place);
int name_file_beside(int file, const FilePlace &place, std::string *beside);

#endif
