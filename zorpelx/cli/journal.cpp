// SPDX-License-Identifier: MIT
/* zorpelx/cli/journal.cpp: the results of jobs in files. */
#include "journal.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <zlib.h>

#include "escaped.h"
#include "json.h"
#include "version.h"
#include "told.h"

namespace fs = std::filesystem;

constexpr const char *RUN_FILE = "run.json";
constexpr const char *ENDING = ".jobs";
constexpr uint32_t MAGIC = 0x424f4a5a; // "ZJOB" in the order of bytes that readers expect

/* Stands before the parts of a result in a file. */
struct Entry {
    uint32_t magic, checksum; // of all that follows, the parts included
    uint64_t digest;          // of the run
    int32_t job, nclusters;
    int64_t objective, excess, size;
};

[[noreturn]] static void fail_at(const std::string &path, const char *what)
{
    fail(STATUS_IO, "%s: %s: %s", escaped(path).c_str(), what, strerror(errno));
}

static uint64_t mixed(uint64_t digest, uint64_t number)
{
    uint64_t z = (digest ^ number) + 0x9e3779b97f4a7c15u;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
}

template <class Number> static void mix_all(const std::vector<Number> &numbers, uint64_t *digest)
{
    *digest = mixed(*digest, numbers.size());
    for (const Number number : numbers) {
        uint64_t bits = 0;
        memcpy(&bits, &number, sizeof number);
        *digest = mixed(*digest, bits);
    }
}

uint64_t digest_of(const Settings &settings, const Problem &problem)
{
    uint64_t digest = 0;
    mix_all(std::vector<char>(ZORPELX_CLI_VERSION, std::end(ZORPELX_CLI_VERSION)), &digest);
    mix_all(problem.eptr, &digest);
    mix_all(problem.graph.pins, &digest);
    mix_all(problem.vwgts, &digest);
    mix_all(problem.hewgts, &digest);
    mix_all(problem.fixed, &digest);
    mix_all(problem.start, &digest);
    mix_all(problem.groups, &digest);
    mix_all(problem.capacities, &digest);
    mix_all(std::vector<int64_t>{settings.nparts, settings.objective, settings.preset,
                                 settings.keep_price, settings.seed, settings.starts},
            &digest);
    mix_all(std::vector<double>{settings.epsilon,
                                was_given(settings, &Settings::least) ? settings.least : -1},
            &digest);
    return digest;
}

uint64_t digest_of_part(const std::vector<int> &part)
{
    uint64_t digest = 0;
    mix_all(part, &digest);
    return digest;
}

static std::string note_text(const RunNote &note)
{
    char digest[20];
    snprintf(digest, sizeof digest, "%016llx", static_cast<unsigned long long>(note.digest));
    return json_text({{"version", ZORPELX_CLI_VERSION},
                      {"digest", digest},
                      {"shards", note.shards},
                      {"folder", note.folder},
                      {"words", note.words}});
}

RunNote read_run(const std::string &folder)
{
    const std::string path = folder + '/' + RUN_FILE;
    std::ifstream file(path);
    if (!file) fail_at(path, "cannot be read");
    const Json json = Json::parse(file, nullptr, false);
    try {
        RunNote note;
        if (json.at("version") != ZORPELX_CLI_VERSION)
            fail(STATUS_BAD_INPUT,
                 "%s: the run began with version %s, this is " ZORPELX_CLI_VERSION,
                 escaped(path).c_str(), escaped(json.at("version").get<std::string>()).c_str());
        note.digest = std::stoull(json.at("digest").get<std::string>(), nullptr, 16);
        note.shards = json.at("shards");
        note.folder = json.at("folder");
        note.words = json.at("words").get<std::vector<std::string>>();
        return note;
    } catch (const std::exception &) {
        fail(STATUS_BAD_INPUT, "%s is not the note of a run", escaped(path).c_str());
    }
}

/* Puts the note there whole, unless there is one: several shards begin at once. */
static void offer_note(const std::string &path, const RunNote &note)
{
    std::string beside = path + ".XXXXXX";
    const int file = mkstemp(beside.data());
    if (file < 0) fail_at(path, "cannot be written");
    const std::string text = note_text(note);
    const bool written =
        write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
        fchmod(file, 0644) == 0 && fsync(file) == 0;
    const bool named = written && (link(beside.c_str(), path.c_str()) == 0 || errno == EEXIST);
    const int why = errno;
    close(file);
    unlink(beside.c_str());
    errno = why;
    if (!named) fail_at(path, "cannot be written");
}

void join_run(const std::string &folder, const RunNote &note)
{
    if (mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST) fail_at(folder, "cannot be made");
    const std::string path = folder + '/' + RUN_FILE;
    if (access(path.c_str(), F_OK) != 0) offer_note(path, note);
    const RunNote there = read_run(folder);
    if (there.digest != note.digest)
        fail(STATUS_USAGE,
             "%s holds results for another hypergraph or other options; take an empty folder, or "
             "what "
             "%s says",
             escaped(folder).c_str(), escaped(path).c_str());
    if (there.shards != note.shards)
        fail(STATUS_USAGE, "%s is of a run of %s, not of %lld", escaped(folder).c_str(),
             counted(there.shards, "shard", "shards").c_str(), static_cast<long long>(note.shards));
}

static uint32_t checksum_of(const Entry &entry, const unsigned char *parts)
{
    const auto *const from = reinterpret_cast<const unsigned char *>(&entry.digest);
    uLong sum = crc32(0, from, sizeof entry - offsetof(Entry, digest));
    return static_cast<uint32_t>(crc32_z(sum, parts, static_cast<size_t>(entry.size)));
}

Journal::Journal(const std::string &where, const std::string &name, uint64_t run)
    : folder(where), digest(run)
{
    if (!name.empty()) open_own(folder + '/' + name + ENDING);
}

Journal::~Journal()
{
    if (own >= 0) close(own);
}

void Journal::open_own(const std::string &path)
{
    own = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_APPEND, 0666);
    if (own < 0) fail_at(path, "cannot be written");
    if (flock(own, LOCK_EX | LOCK_NB) != 0)
        fail(STATUS_USAGE, "%s: another process is at work on it", escaped(path).c_str());
    std::vector<FinishedJob> records;
    own_size = read_file(path, 0, &records);
    struct stat status;
    if (fstat(own, &status) != 0) fail_at(path, "cannot be read");
    if (status.st_size > static_cast<off_t>(own_size) &&
        ftruncate(own, static_cast<off_t>(own_size)) != 0)
        fail_at(path, "cannot be cut");
}

/* Reads whole results; returns the size of all that is whole. */
size_t Journal::read_file(const std::string &path, size_t from,
                          std::vector<FinishedJob> *records) const
{
    std::ifstream file(path, std::ios::binary);
    if (!file) fail_at(path, "cannot be read");
    file.seekg(static_cast<std::streamoff>(from));
    std::error_code error;
    const uint64_t most = fs::file_size(path, error);
    if (error) return from; // a device, say: nothing to be read from
    Entry entry;
    while (file.read(reinterpret_cast<char *>(&entry), sizeof entry)) {
        if (entry.magic != MAGIC || entry.digest != digest || entry.size < 0) break;
        if (from + sizeof entry + static_cast<uint64_t>(entry.size) > most) break; // cut off
        std::vector<unsigned char> parts(static_cast<size_t>(entry.size));
        if (!file.read(reinterpret_cast<char *>(parts.data()), entry.size)) break;
        if (checksum_of(entry, parts.data()) != entry.checksum) break;
        from += sizeof entry + parts.size();
        records->push_back(std::make_shared<JobRecord>(JobRecord{
            entry.job, entry.nclusters, entry.objective, entry.excess, std::move(parts)}));
    }
    return from;
}

std::vector<FinishedJob> Journal::read()
{
    std::vector<FinishedJob> records;
    std::error_code error;
    std::vector<std::string> paths;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder, error))
        if (entry.path().extension() == ENDING) paths.push_back(entry.path());
    if (error) fail(STATUS_IO, "%s: %s", escaped(folder).c_str(), error.message().c_str());
    std::sort(paths.begin(), paths.end());
    for (const std::string &path : paths) {
        size_t &from = seen[path];
        from = read_file(path, from, &records);
    }
    return records;
}

void Journal::append(const JobRecord &record)
{
    Entry entry = {MAGIC,
                   0,
                   digest,
                   record.job,
                   record.nclusters,
                   record.objective,
                   record.excess,
                   static_cast<int64_t>(record.parts.size())};
    entry.checksum = checksum_of(entry, record.parts.data());
    std::vector<unsigned char> bytes(sizeof entry + record.parts.size());
    memcpy(bytes.data(), &entry, sizeof entry);
    std::copy(record.parts.begin(), record.parts.end(), bytes.begin() + sizeof entry);
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = write(own, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) break;
        done += static_cast<size_t>(written);
    }
    if (done == bytes.size() && fdatasync(own) == 0) {
        own_size += bytes.size();
        return;
    }
    const int why = errno;
    [[maybe_unused]] const int cut = ftruncate(own, static_cast<off_t>(own_size));
    errno = why;
    fail_at(folder, "a result cannot be written");
}
