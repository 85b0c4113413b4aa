// SPDX-License-Identifier: MIT
/* zorpelx/output/outputs.cpp: everything that a command writes, decided before it runs.
 *
 * Stages of writing: every new file is filled and synced; streams and devices are written; then,
 * with signals held back, every file gets its name, and at last the folders are synced. A fault in
 * the first two stages leaves all files as they were. Where the file system has no nameless files
 * these two change places.
 */
#include "outputs.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "escaped.h"
#include "hold_signals.h"
#include "newfile.h"

/* What is written to one output. */
struct OutputDraft {
    Output *output;
    std::string_view content;
    std::string beside; // the name that the new file has for a moment; empty: none
    bool stands = false;
};

std::string shown_output(const std::string &name)
{
    return name == "-" ? "standard output" : escaped(name);
}

static const char *sentence_of(int error)
{
    if (error == EBUSY) return "it is a mount point, which no other file can replace";
    return strerror(error);
}

static OutputFault cannot_write(const std::string &name, int error)
{
    return {OUTPUT_FAILED, "cannot write " + shown_output(name) + ": " + sentence_of(error)};
}

static bool is_input(const FilePlace &place, const std::string &input)
{
    struct stat status;
    if (input.empty()) return false;
    const int found = input == "-" ? fstat(STDIN_FILENO, &status) : stat(input.c_str(), &status);
    return found == 0 && place.exists && place.old.st_dev == status.st_dev &&
           place.old.st_ino == status.st_ino && !S_ISCHR(status.st_mode) &&
           !S_ISSOCK(status.st_mode);
}

static std::string shown_input(const std::string &name)
{
    return name == "-" ? "standard input" : escaped(name);
}

static OutputFault fault_of_inputs(const std::string &name, const FilePlace &place,
                                   const std::vector<std::string> &inputs)
{
    for (const std::string &input : inputs) {
        if (!is_input(place, input)) continue;
        std::string text = shown_output(name) + " is read, and would be overwritten";
        if (input != name) text += " (it is " + shown_input(input) + ")";
        return {OUTPUT_REFUSED, text};
    }
    return {};
}

static OutputFault written_twice(const std::string &name, const std::string &other)
{
    std::string text = shown_output(name) + " would be written twice";
    if (name != other) text += " (it is " + shown_output(other) + ")";
    return {OUTPUT_REFUSED, text};
}

/* Whether the owner of what stands there can be kept shows on the new file. */
static int open_file(Output *output)
{
    if (const int error = error_of_replacing(output->place)) return error;
    if (const int error = create_nameless(output->place, &output->file)) return error;
    return output->file < 0 ? 0 : take_rights(output->place, output->file);
}

/* A FIFO is opened when there is something to write: before, it would wait for its reader. */
static int open_device(Output *output)
{
    const FilePlace &place = output->place;
    if (faccessat(place.folder, place.last.c_str(), W_OK, AT_EACCESS) != 0) return errno;
    if (S_ISFIFO(place.old.st_mode)) return 0;
    output->file =
        openat(place.folder, place.last.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY);
    return output->file < 0 ? errno : 0;
}

static int open_output(Output *output)
{
    switch (output->place.kind) {
    case PLACE_FILE:
        return open_file(output);
    case PLACE_DEVICE:
        return open_device(output);
    default:
        return 0;
    }
}

static OutputFault find_places(const std::vector<std::string> &names,
                               const std::vector<std::string> &inputs, Outputs *outputs)
{
    for (const std::string &name : names) {
        Output &output = outputs->list.emplace_back();
        output.name = name;
        if (name.empty()) continue;
        if (const int error = find_place(name, &output.place)) return cannot_write(name, error);
        if (OutputFault fault = fault_of_inputs(name, output.place, inputs); fault.status != 0)
            return fault;
        for (const Output &other : outputs->list)
            if (&other != &output && !other.name.empty() && is_one_place(other.place, output.place))
                return written_twice(name, other.name);
    }
    return {};
}

OutputFault open_outputs(const std::vector<std::string> &names,
                         const std::vector<std::string> &inputs, Outputs *outputs)
{
    outputs->list.reserve(names.size());
    if (OutputFault fault = find_places(names, inputs, outputs); fault.status != 0) return fault;
    for (Output &output : outputs->list) {
        if (output.name.empty()) continue;
        if (const int error = open_output(&output)) return cannot_write(output.name, error);
    }
    return {};
}

/* A stream that goes to a regular file, or to none. */
static bool stream_to_file(int descriptor, FilePlace *place)
{
    place->kind = PLACE_STREAM;
    place->descriptor = descriptor;
    place->exists = fstat(descriptor, &place->old) == 0;
    return place->exists && S_ISREG(place->old.st_mode);
}

OutputFault check_streams(const Outputs &outputs, const std::vector<std::string> &inputs)
{
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
        const char *const name = descriptor == STDOUT_FILENO ? "standard output" : "standard error";
        FilePlace place;
        if (!stream_to_file(descriptor, &place)) continue;
        if (OutputFault fault = fault_of_inputs(name, place, inputs); fault.status != 0)
            return fault;
        for (const Output &output : outputs.list)
            if (!output.name.empty() && output.place.kind == PLACE_FILE &&
                is_one_place(output.place, place))
                return written_twice(output.name, name);
    }
    return {};
}

bool takes_standard_output(const Output &output)
{
    if (output.name.empty() || output.place.kind == PLACE_FILE) return false;
    if (output.place.descriptor == STDOUT_FILENO) return true;
    struct stat status;
    return fstat(STDOUT_FILENO, &status) == 0 && !S_ISCHR(status.st_mode) &&
           status.st_dev == output.place.old.st_dev && status.st_ino == output.place.old.st_ino;
}

/* What stands at the place now, which may have changed during the run. */
static int look_again(FilePlace *place)
{
    place->exists =
        fstatat(place->folder, place->last.c_str(), &place->old, AT_SYMLINK_NOFOLLOW) == 0;
    if (!place->exists) return errno == ENOENT ? 0 : errno;
    return S_ISREG(place->old.st_mode) ? 0 : EEXIST;
}

static int make_file(OutputDraft *draft)
{
    Output *const output = draft->output;
    if (const int error = look_again(&output->place)) return error;
    int error = 0;
    if (output->file < 0) error = create_nameless(output->place, &output->file);
    if (error == 0 && output->file < 0)
        error = create_beside(output->place, &draft->beside, &output->file);
    if (error == 0) error = take_rights(output->place, output->file); // before anybody can read it
    return error != 0 ? error : fill_file(output->file, draft->content);
}

static int write_stream(OutputDraft *draft)
{
    Output *const output = draft->output;
    const bool ours = output->place.kind == PLACE_STREAM;
    if (!ours && output->file < 0)
        output->file = openat(output->place.folder, output->place.last.c_str(),
                              O_WRONLY | O_CLOEXEC | O_NOCTTY);
    const int file = ours ? output->place.descriptor : output->file;
    if (file < 0) return errno;
    const int error = write_all(file, draft->content);
    draft->stands = error == 0;
    return error;
}

/* The names of those that stand, for a message. */
static std::string standing(const std::vector<OutputDraft> &drafts)
{
    std::string names;
    for (const OutputDraft &draft : drafts)
        if (draft.stands) names += (names.empty() ? "" : ", ") + shown_output(draft.output->name);
    return names;
}

static OutputFault failed_draft(const std::vector<OutputDraft> &drafts, const OutputDraft &draft,
                                int error)
{
    OutputFault fault = cannot_write(draft.output->name, error);
    const std::string names = standing(drafts);
    if (!names.empty()) fault.text += "; written in spite of it: " + names;
    return fault;
}

/* One stage over those outputs that are files, or over those that are not. */
static OutputFault run_stage(std::vector<OutputDraft> *drafts, bool files,
                             int (*step)(OutputDraft *))
{
    for (OutputDraft &draft : *drafts) {
        if ((draft.output->place.kind == PLACE_FILE) != files) continue;
        if (const int error = step(&draft)) return failed_draft(*drafts, draft, error);
    }
    return {};
}

static int rename_file(const FilePlace &place, const std::string &beside)
{
    return renameat(place.folder, beside.c_str(), place.folder, place.last.c_str());
}

/* Names beside their places for those that replace something; the others get their own at once. */
static int prepare_name(OutputDraft *draft)
{
    const Output &output = *draft->output;
    if (!draft->beside.empty() || !output.place.exists) return 0;
    return name_file_beside(output.file, output.place, &draft->beside);
}

/* A name that was free a moment ago and is taken now is somebody else's, or that of another output
 * on a file system to which the two names are one: either would be lost. */
static int place_file(OutputDraft *draft)
{
    const Output &output = *draft->output;
    if (draft->beside.empty()) {
        if (const int error = name_file(output.file, output.place)) return error;
    } else {
        if (rename_file(output.place, draft->beside) != 0) return errno;
        draft->beside.clear();
    }
    draft->stands = true;
    return 0;
}

static void remove_beside(const std::vector<OutputDraft> &drafts)
{
    for (const OutputDraft &draft : drafts)
        if (!draft.beside.empty()) unlinkat(draft.output->place.folder, draft.beside.c_str(), 0);
}

/* Not every file system syncs a folder: the names stand all the same. */
static void sync_folder(const FilePlace &place)
{
    const int file = openat(place.folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0) return;
    fsync(file);
    close(file);
}

/* A file that had a name once gets no other: a second write makes a new one. */
static void finish(const std::vector<OutputDraft> &drafts)
{
    for (const OutputDraft &draft : drafts) {
        Output *const output = draft.output;
        if (output->place.kind != PLACE_FILE || output->file < 0) continue;
        if (draft.stands) sync_folder(output->place);
        close(output->file);
        output->file = -1;
    }
}

/* Files that have a name beside their places from the beginning. */
static bool lack_nameless_files(const std::vector<OutputDraft> &drafts)
{
    return std::any_of(drafts.begin(), drafts.end(), [](const OutputDraft &draft) {
        return draft.output->place.kind == PLACE_FILE && draft.output->file < 0;
    });
}

static OutputFault name_files(std::vector<OutputDraft> *drafts)
{
    OutputFault fault = run_stage(drafts, true, prepare_name);
    return fault.status != 0 ? fault : run_stage(drafts, true, place_file);
}

/* As long as a file that is not yet in its place has a name, no signal may end the process. A FIFO
 * may wait for its reader for ever, so streams come before that. */
static OutputFault write_drafts(std::vector<OutputDraft> *drafts)
{
    const bool named = lack_nameless_files(*drafts);
    OutputFault fault =
        named ? run_stage(drafts, false, write_stream) : run_stage(drafts, true, make_file);
    if (fault.status == 0 && !named) fault = run_stage(drafts, false, write_stream);
    const Held held = hold_all_signals();
    if (fault.status == 0 && named) fault = run_stage(drafts, true, make_file);
    if (fault.status == 0) fault = name_files(drafts);
    remove_beside(*drafts);
    release_signals(held);
    finish(*drafts);
    return fault;
}

OutputFault write_outputs(Outputs *outputs, const std::vector<std::string_view> &contents)
{
    std::vector<OutputDraft> drafts;
    for (size_t i = 0; i < outputs->list.size() && i < contents.size(); i++)
        if (!outputs->list[i].name.empty() && contents[i].data() != nullptr)
            drafts.push_back({&outputs->list[i], contents[i], "", false});
    const Held held = hold_write_signals();
    OutputFault fault = write_drafts(&drafts);
    release_signals(held);
    return fault;
}

void close_outputs(Outputs *outputs)
{
    for (Output &output : outputs->list) {
        release_place(&output.place);
        if (output.file >= 0) close(output.file);
    }
    outputs->list.clear();
}
