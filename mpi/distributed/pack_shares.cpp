// SPDX-License-Identifier: MIT
/* mpi/distributed/pack_shares.cpp: shares of gains on their way to other ranks, in few bytes.
 *
 * A share is three numbers, of seven bits a byte, the lowest first; a byte of 128 and more has
 * another one behind it:
 *
 *     vertex less that of the share before | part + 1 | folded value
 *
 * where folding makes 0, -1, 1, -2, 2, ... of 0, 1, 2, 3, 4, ... and back.
 */
#include "distributed/pack_shares.h"

#include <algorithm>

using Packed = std::vector<unsigned char>;

static void put_number(uint64_t number, Packed *bytes)
{
    for (; number >= 128; number >>= 7)
        bytes->push_back(static_cast<unsigned char>(128 | (number & 127)));
    bytes->push_back(static_cast<unsigned char>(number));
}

static uint64_t take_number(const Packed &bytes, size_t *at)
{
    uint64_t number = 0;
    for (int shift = 0;; shift += 7) {
        assert(*at < bytes.size() && shift < 64);
        const uint64_t byte = bytes[(*at)++];
        number |= (byte & 127) << shift;
        if (byte < 128) return number;
    }
}

/* Values near 0 of either sign as small numbers; all 64 bits come back. */
static uint64_t folded(int64_t value)
{
    const uint64_t bits = static_cast<uint64_t>(value);
    return value < 0 ? ~(bits << 1) : bits << 1;
}

static int64_t unfolded(uint64_t number)
{
    return static_cast<int64_t>(number & 1 ? ~(number >> 1) : number >> 1);
}

static void pack(const Mail<Share> &mail, Mail<unsigned char> *packed)
{
    packed->first.assign(1, 0);
    for (size_t r = 1; r < mail.first.size(); r++) {
        int last = 0;
        for (int64_t i = mail.first[r - 1]; i < mail.first[r]; i++) {
            const Share &share = mail.records[static_cast<size_t>(i)];
            assert(share.vertex >= last && share.part >= -1);
            put_number(static_cast<uint64_t>(share.vertex - last), &packed->records);
            put_number(static_cast<uint64_t>(share.part + 1), &packed->records);
            put_number(folded(share.value), &packed->records);
            last = share.vertex;
        }
        packed->first.push_back(static_cast<int64_t>(packed->records.size()));
    }
}

static void unpack(const Mail<unsigned char> &packed, Mail<Share> *mail)
{
    const auto ends = std::count_if(packed.records.begin(), packed.records.end(),
                                    [](unsigned char byte) { return byte < 128; });
    mail->records.reserve(static_cast<size_t>(ends) / 3); // numbers in each
    mail->first.assign(1, 0);
    for (size_t r = 1; r < packed.first.size(); r++) {
        const size_t end = static_cast<size_t>(packed.first[r]);
        int vertex = 0;
        for (size_t at = static_cast<size_t>(packed.first[r - 1]); at < end;) {
            vertex += static_cast<int>(take_number(packed.records, &at));
            assert(vertex >= 0);
            const int part = static_cast<int>(take_number(packed.records, &at)) - 1;
            assert(part >= -1 && at < end);
            mail->records.push_back({vertex, part, unfolded(take_number(packed.records, &at))});
        }
        mail->first.push_back(static_cast<int64_t>(mail->records.size()));
    }
    assert(mail->first.size() == packed.first.size());
}

void exchange_shares(Ranks *ranks, Mail<Share> *mail)
{
    if (ranks->nranks == 1) return; // what is sent is what comes in
    Mail<unsigned char> packed;
    pack(*mail, &packed);
    *mail = Mail<Share>();
    exchange(ranks, &packed);
    unpack(packed, mail);
}
