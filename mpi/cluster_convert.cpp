// SPDX-License-Identifier: MIT
/* mpi/cluster_convert.cpp: convert: the binary form of a hypergraph, written by all ranks.
 *
 * The file is made beside its place: rank 0 makes it, every rank writes the bytes of its share, and
 * when all are on the disk rank 0 renames it.
 */
#include "cluster_distributed.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "distributed/read_binary.h"
#include "input.h"

/* Where a rank's numbers go. */
struct BinaryShare {
    BinaryPlaces places;
    int64_t firstnet, firstpin, firstvertex;
};

static void write_numbers(int file, const std::string &name, int64_t place,
                          const std::vector<int64_t> &numbers)
{
    const char *at = reinterpret_cast<const char *>(numbers.data());
    int64_t n = static_cast<int64_t>(numbers.size()) * 8;
    while (n > 0) {
        const ssize_t done = pwrite(file, at, static_cast<size_t>(n), place);
        if (done < 0 && errno == EINTR) continue;
        if (done < 0)
            fail(STATUS_IO, "%s cannot be written: %s", shown_name(name).c_str(), strerror(errno));
        at += done;
        place += done;
        n -= done;
    }
}

static void write_share(const std::string &name, const Ranks &ranks, const ShareHeader &header,
                        const BinaryShare &share, LooseNets *nets, const Level &level)
{
    const int file = open(name.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0)
        fail(STATUS_IO, "%s cannot be opened: %s", shown_name(name).c_str(), strerror(errno));
    std::vector<int64_t> numbers(1);
    memcpy(numbers.data(), BINARY_MARK, 8);
    numbers.insert(numbers.end(), {header.flags, header.nnets, header.nvertices, header.npins});
    if (ranks.rank == 0) write_numbers(file, name, 0, numbers);
    write_numbers(file, name, share.places.pins + 8 * share.firstpin, nets->pins);
    if (header.flags & HAS_NET_WEIGHTS)
        write_numbers(file, name, share.places.netweight + 8 * share.firstnet, nets->weight);
    if (header.flags & HAS_VERTEX_WEIGHTS)
        write_numbers(file, name, share.places.weight + 8 * share.firstvertex, level.weight);
    for (int64_t &place : nets->ptr) place += share.firstpin;
    if (ranks.rank + 1 < ranks.nranks) nets->ptr.pop_back(); // the next rank's first one
    write_numbers(file, name, share.places.ptr + 8 * share.firstnet, nets->ptr);
    if (fsync(file) != 0 || close(file) != 0)
        fail(STATUS_IO, "%s cannot be written: %s", shown_name(name).c_str(), strerror(errno));
}

static void make_file(const std::string &name, int64_t size)
{
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0 || ftruncate(file, size) != 0 || close(file) != 0)
        fail(STATUS_IO, "%s cannot be made: %s", shown_name(name).c_str(), strerror(errno));
}

static Status write_file(Ranks *ranks, const Settings &settings, const ShareHeader &header,
                         LooseNets *nets, const Level &level)
{
    const std::string beside = settings.output + ".unfinished";
    const BinaryShare share = {binary_places(&header),
                               sum_before(ranks, static_cast<int64_t>(nets->weight.size())),
                               sum_before(ranks, static_cast<int64_t>(nets->pins.size())),
                               share_begin(ranks, header.nvertices, ranks->rank)};
    Status status = on_all_ranks(ranks, [&] {
        if (ranks->rank == 0) make_file(beside, share.places.end);
    });
    if (status != STATUS_OK) return status;
    status = on_all_ranks(ranks, [&] { write_share(beside, *ranks, header, share, nets, level); });
    if (status == STATUS_OK)
        status = on_all_ranks(ranks, [&] {
            if (ranks->rank == 0 && rename(beside.c_str(), settings.output.c_str()) != 0)
                fail(STATUS_IO, "%s cannot be renamed: %s", shown_name(beside).c_str(),
                     strerror(errno));
        });
    if (status != STATUS_OK && ranks->rank == 0) unlink(beside.c_str());
    return status;
}

Status run_distributed_convert(const Settings &settings, MPI_Comm comm)
{
    Ranks ranks = ranks_of(comm);
    ShareHeader header;
    ShareFault fault = {};
    LooseNets nets;
    Level level = {};
    if (!read_hypergraph_share(&ranks, settings.hypergraph.c_str(), settings.first, &header, &nets,
                               &level, &fault))
        return tell_fault(&ranks, settings.hypergraph, fault);
    header.npins = sum_of_all(&ranks, static_cast<int64_t>(nets.pins.size()));
    return write_file(&ranks, settings, header, &nets, level);
}
