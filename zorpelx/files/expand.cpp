// SPDX-License-Identifier: MIT
/* zorpelx/files/expand.cpp: gzip, zstd, xz and bzip2.
 *
 * Each expander turns one block of input after the other into output that is appended at once, so
 * that a few bytes which expand to gigabytes meet the cap on memory and the deadline on the way.
 * All four formats allow members one after another, read as one text.
 */
#include "expand.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

#ifdef ZORPELX_WITH_ZLIB
#include <zlib.h>
#endif
#ifdef ZORPELX_WITH_ZSTD
#include <zstd.h>
#include <zstd_errors.h>
#endif
#ifdef ZORPELX_WITH_LZMA
#include <lzma.h>
#endif
#ifdef ZORPELX_WITH_BZIP2
#include <bzlib.h>
#endif

#include "fileerror.h"
#include "zorpelx.h"

constexpr size_t OUT_BLOCK = size_t{1} << 18;

[[maybe_unused]] static const char *const TOO_EARLY = "the file ends too early";
[[maybe_unused]] static const char *const MORE_FOLLOWS = "other bytes follow the data";

[[maybe_unused, noreturn]] static void damaged(const RawFile &file, const char *kind,
                                               const char *what)
{
    file_error(ZORPELX_BAD_INPUT, "%s: %s data: %s", file.budget->name.c_str(), kind, what);
}

[[maybe_unused, noreturn]] static void not_built_in(const RawFile &file, const char *kind)
{
    file_error(ZORPELX_BAD_INPUT, "%s: it is compressed by %s, which was left out of this build",
               file.budget->name.c_str(), kind);
}

#ifdef ZORPELX_WITH_ZLIB
/* Expands the member that begins at the next byte. */
static void inflate_member(z_stream *stream, RawFile *file, Bytes *bytes)
{
    for (int code = Z_OK; code != Z_STREAM_END;) {
        if (!refill(file)) damaged(*file, "gzip", TOO_EARLY);
        check_time(*file->budget);
        stream->next_in = file->block.data() + file->begin;
        stream->avail_in = static_cast<uInt>(file->end - file->begin);
        stream->next_out = reinterpret_cast<Bytef *>(room_for(bytes, OUT_BLOCK));
        stream->avail_out = static_cast<uInt>(OUT_BLOCK);
        code = inflate(stream, Z_NO_FLUSH);
        file->begin = file->end - stream->avail_in;
        take_in(bytes, OUT_BLOCK - stream->avail_out, file->budget);
        if (code == Z_MEM_ERROR) throw std::bad_alloc();
        if (code != Z_OK && code != Z_STREAM_END && code != Z_BUF_ERROR)
            damaged(*file, "gzip", stream->msg != nullptr ? stream->msg : "damaged");
    }
}

static void expand_gzip(RawFile *file, Bytes *bytes)
{
    z_stream stream = {};
    if (inflateInit2(&stream, 16 + MAX_WBITS) != Z_OK) throw std::bad_alloc();
    const std::unique_ptr<z_stream, decltype(&inflateEnd)> release(&stream, inflateEnd);
    do {
        inflate_member(&stream, file, bytes);
        inflateReset(&stream);
        if (refill(file) && file->block[file->begin] != 0x1f) damaged(*file, "gzip", MORE_FOLLOWS);
    } while (refill(file));
}
#else
static void expand_gzip(RawFile *file, Bytes *)
{
    not_built_in(*file, "gzip");
}
#endif

#ifdef ZORPELX_WITH_ZSTD
/* The largest window that what is left of the budget has room for. */
static int largest_window(const Budget &budget)
{
    int log = 10; // the least that the format has
    while (log < 31 && size_t{1} << (log + 1) <= budget.most - budget.used) log++;
    return log;
}

static void check_zstd(const RawFile &file, size_t result)
{
    if (!ZSTD_isError(result)) return;
    const ZSTD_ErrorCode code = ZSTD_getErrorCode(result);
    if (code == ZSTD_error_memory_allocation) throw std::bad_alloc();
    if (code == ZSTD_error_frameParameter_windowTooLarge)
        file_error(ZORPELX_NO_MEMORY, "%s: zstd data: expanding it takes more memory than there is",
                   file.budget->name.c_str());
    damaged(file, "zstd", ZSTD_getErrorName(result));
}

static void expand_zstd(RawFile *file, Bytes *bytes)
{
    const std::unique_ptr<ZSTD_DStream, decltype(&ZSTD_freeDStream)> stream(ZSTD_createDStream(),
                                                                            ZSTD_freeDStream);
    if (!stream) throw std::bad_alloc();
    check_zstd(*file, ZSTD_DCtx_setParameter(stream.get(), ZSTD_d_windowLogMax,
                                             largest_window(*file->budget)));
    size_t wanted = 1, made = 0; // wanted is 0 at the end of a frame
    while (refill(file) || (wanted > 0 && made == OUT_BLOCK)) {
        check_time(*file->budget);
        ZSTD_inBuffer in = {file->block.data(), file->end, file->begin};
        ZSTD_outBuffer out = {room_for(bytes, OUT_BLOCK), OUT_BLOCK, 0};
        wanted = ZSTD_decompressStream(stream.get(), &out, &in);
        check_zstd(*file, wanted);
        file->begin = in.pos;
        take_in(bytes, made = out.pos, file->budget);
    }
    if (wanted > 0) damaged(*file, "zstd", TOO_EARLY);
}
#else
static void expand_zstd(RawFile *file, Bytes *)
{
    not_built_in(*file, "zstd");
}
#endif

#ifdef ZORPELX_WITH_LZMA
static void check_xz(const RawFile &file, lzma_ret code)
{
    if (code == LZMA_OK || code == LZMA_STREAM_END) return;
    if (code == LZMA_MEM_ERROR) throw std::bad_alloc();
    if (code == LZMA_MEMLIMIT_ERROR)
        file_error(ZORPELX_NO_MEMORY, "%s: xz data: expanding it takes more memory than there is",
                   file.budget->name.c_str());
    damaged(file, "xz", code == LZMA_BUF_ERROR ? TOO_EARLY : "damaged");
}

static void expand_xz(RawFile *file, Bytes *bytes)
{
    lzma_stream stream = LZMA_STREAM_INIT;
    check_xz(*file, lzma_stream_decoder(&stream, file->budget->most - file->budget->used,
                                        LZMA_CONCATENATED));
    const std::unique_ptr<lzma_stream, decltype(&lzma_end)> release(&stream, lzma_end);
    for (lzma_ret code = LZMA_OK; code != LZMA_STREAM_END;) {
        const bool more = refill(file);
        check_time(*file->budget);
        stream.next_in = file->block.data() + file->begin;
        stream.avail_in = file->end - file->begin;
        stream.next_out = reinterpret_cast<uint8_t *>(room_for(bytes, OUT_BLOCK));
        stream.avail_out = OUT_BLOCK;
        code = lzma_code(&stream, more ? LZMA_RUN : LZMA_FINISH);
        file->begin = file->end - stream.avail_in;
        take_in(bytes, OUT_BLOCK - stream.avail_out, file->budget);
        check_xz(*file, code);
    }
}
#else
static void expand_xz(RawFile *file, Bytes *)
{
    not_built_in(*file, "xz");
}
#endif

#ifdef ZORPELX_WITH_BZIP2
static void expand_bzip2_member(RawFile *file, Bytes *bytes)
{
    bz_stream stream = {};
    if (BZ2_bzDecompressInit(&stream, 0, 0) != BZ_OK) throw std::bad_alloc();
    const std::unique_ptr<bz_stream, decltype(&BZ2_bzDecompressEnd)> release(&stream,
                                                                             BZ2_bzDecompressEnd);
    size_t made = 0;
    for (int code = BZ_OK; code != BZ_STREAM_END;) {
        if (!refill(file) && made < OUT_BLOCK) damaged(*file, "bzip2", TOO_EARLY);
        check_time(*file->budget);
        stream.next_in = reinterpret_cast<char *>(file->block.data() + file->begin);
        stream.avail_in = static_cast<unsigned>(file->end - file->begin);
        stream.next_out = room_for(bytes, OUT_BLOCK);
        stream.avail_out = static_cast<unsigned>(OUT_BLOCK);
        code = BZ2_bzDecompress(&stream);
        file->begin = file->end - stream.avail_in;
        take_in(bytes, made = OUT_BLOCK - stream.avail_out, file->budget);
        if (code == BZ_MEM_ERROR) throw std::bad_alloc();
        if (code != BZ_OK && code != BZ_STREAM_END) damaged(*file, "bzip2", "damaged");
    }
}

static void expand_bzip2(RawFile *file, Bytes *bytes)
{
    do {
        if (file->block[file->begin] != 'B') damaged(*file, "bzip2", MORE_FOLLOWS);
        expand_bzip2_member(file, bytes);
    } while (refill(file));
}
#else
static void expand_bzip2(RawFile *file, Bytes *)
{
    not_built_in(*file, "bzip2");
}
#endif

const Expander EXPANDERS[NEXPANDERS] = {
    {"gzip", ".gz", "\x1f\x8b", 2, expand_gzip},
    {"zstd", ".zst", "\x28\xb5\x2f\xfd", 4, expand_zstd},
    {"xz", ".xz",
     "\xfd"
     "7zXZ\0",
     6, expand_xz},
    {"bzip2", ".bz2", "BZh", 3, expand_bzip2},
};

const Expander *find_expander(const RawFile &file)
{
    for (const Expander &expander : EXPANDERS)
        if (file.end >= expander.length &&
            memcmp(file.block.data(), expander.magic, expander.length) == 0)
            return &expander;
    return nullptr;
}

std::string plain_name(const std::string &name)
{
    for (const Expander &expander : EXPANDERS) {
        const size_t length = strlen(expander.ending);
        if (name.size() > length &&
            name.compare(name.size() - length, length, expander.ending) == 0)
            return name.substr(0, name.size() - length);
    }
    return name;
}
