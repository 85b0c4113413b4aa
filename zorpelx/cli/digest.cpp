// SPDX-License-Identifier: MIT
/* zorpelx/cli/digest.cpp: SHA-256 digests of hypergraphs, partitions and texts.
 *
 * The text of a hypergraph is never there as a whole: it passes through a small buffer.
 */
#include "digest.h"

#include <charconv>
#include <cstdio>
#include <sha2.h>

constexpr size_t FULL = size_t{1} << 16; // bytes after which the buffer is taken in

struct Digest {
    SHA2_CTX state;
    std::string text; // not yet taken in
};

static Digest open_digest()
{
    Digest digest;
    SHA256Init(&digest.state);
    return digest;
}

static void take_in(Digest *digest, std::string_view text)
{
    SHA256Update(&digest->state, reinterpret_cast<const uint8_t *>(text.data()), text.size());
}

static void put_number(Digest *digest, int64_t number, char behind)
{
    char digits[24];
    char *const end = std::to_chars(digits, digits + sizeof digits - 1, number).ptr;
    *end = behind;
    digest->text.append(digits, end + 1);
    if (digest->text.size() < FULL) return;
    take_in(digest, digest->text);
    digest->text.clear();
}

static std::string close_digest(Digest *digest)
{
    take_in(digest, digest->text);
    uint8_t bytes[SHA256_DIGEST_LENGTH];
    SHA256Final(bytes, &digest->state);
    std::string hexadecimal;
    for (const uint8_t byte : bytes) {
        hexadecimal += "0123456789abcdef"[byte >> 4];
        hexadecimal += "0123456789abcdef"[byte & 15];
    }
    return hexadecimal;
}

std::string digest_of(std::string_view text)
{
    Digest digest = open_digest();
    take_in(&digest, text);
    return close_digest(&digest);
}

static void put_net(Digest *digest, const Hypergraph &graph, size_t e)
{
    const size_t begin = static_cast<size_t>(graph.start[e]);
    const size_t end = static_cast<size_t>(graph.start[e + 1]);
    put_number(digest, graph.netwgt[e], begin == end ? '\n' : ' ');
    for (size_t j = begin; j < end; j++)
        put_number(digest, int64_t{graph.pins[j]} + 1, j + 1 == end ? '\n' : ' ');
}

std::string digest_of(const Hypergraph &graph)
{
    constexpr int BOTH_WEIGHTS = 11;
    Digest digest = open_digest();
    put_number(&digest, graph.nnets, ' ');
    put_number(&digest, graph.nvertices, ' ');
    put_number(&digest, BOTH_WEIGHTS, '\n');
    for (size_t e = 0; e < static_cast<size_t>(graph.nnets); e++) put_net(&digest, graph, e);
    for (const int64_t weight : graph.vertexwgt) put_number(&digest, weight, '\n');
    return close_digest(&digest);
}

std::string digest_of(const std::vector<int> &numbers)
{
    Digest digest = open_digest();
    for (const int number : numbers) put_number(&digest, number, '\n');
    return close_digest(&digest);
}
