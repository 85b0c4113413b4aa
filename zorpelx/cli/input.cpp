/* zorpelx/cli/input.cpp: whole files, plain or compressed by gzip or zstd.
 *
 * A file is read to its end first and expanded in memory then: the commands need all of it anyway,
 * and a pipe can be read only once.
 */
#include "input.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>

#include <zlib.h>
#include <zstd.h>

#include "failure.h"

constexpr size_t BLOCK = size_t{1} << 18;

std::string shown_name(const std::string &name)
{
    return name == "-" ? "standard input" : name;
}

static bool ends_with(const std::string &name, const char *ending)
{
    const size_t length = strlen(ending);
    return name.size() > length && name.compare(name.size() - length, length, ending) == 0;
}

std::string plain_name(const std::string &name)
{
    if (ends_with(name, ".gz")) return name.substr(0, name.size() - 3);
    if (ends_with(name, ".zst")) return name.substr(0, name.size() - 4);
    return name;
}

static std::string read_stream(FILE *stream, const std::string &name)
{
    std::string bytes;
    for (size_t got = 1; got > 0;) {
        const size_t size = bytes.size();
        bytes.resize(size + BLOCK);
        got = fread(bytes.data() + size, 1, BLOCK, stream);
        bytes.resize(size + got);
    }
    if (ferror(stream)) fail(STATUS_IO, "%s: %s", shown_name(name).c_str(), strerror(errno));
    return bytes;
}

static std::string read_bytes(const std::string &name)
{
    if (name == "-") return read_stream(stdin, name);
    const auto close = [](FILE *stream) { fclose(stream); };
    const std::unique_ptr<FILE, decltype(close)> stream(fopen(name.c_str(), "rb"), close);
    if (!stream) fail(STATUS_IO, "%s: %s", name.c_str(), strerror(errno));
    return read_stream(stream.get(), name);
}

[[noreturn]] static void damaged(const std::string &name, const char *kind, const char *what)
{
    fail(STATUS_BAD_INPUT, "%s: %s data: %s", shown_name(name).c_str(), kind, what);
}

/* Expands the member that stream points at into plain, up to its end. */
static void inflate_member(z_stream *stream, const std::string &name, std::string *plain)
{
    for (int code = Z_OK; code != Z_STREAM_END;) {
        const size_t size = plain->size();
        plain->resize(size + BLOCK);
        stream->next_out = reinterpret_cast<Bytef *>(plain->data() + size);
        stream->avail_out = static_cast<uInt>(BLOCK);
        code = inflate(stream, Z_NO_FLUSH);
        plain->resize(size + BLOCK - stream->avail_out);
        if (code == Z_MEM_ERROR) throw std::bad_alloc();
        if (code == Z_BUF_ERROR) damaged(name, "gzip", "the file ends too early");
        if (code != Z_OK && code != Z_STREAM_END)
            damaged(name, "gzip", stream->msg != nullptr ? stream->msg : "damaged");
    }
}

static bool gzip_begins(const std::string &bytes, size_t place)
{
    return bytes.size() >= place + 2 && bytes.compare(place, 2, "\x1f\x8b") == 0;
}

static std::string expand_gzip(const std::string &bytes, const std::string &name)
{
    const auto end = [](z_stream *stream) { inflateEnd(stream); };
    std::string plain;
    for (size_t place = 0; place < bytes.size();) {
        if (!gzip_begins(bytes, place)) damaged(name, "gzip", "other bytes follow the data");
        z_stream stream = {};
        if (inflateInit2(&stream, 16 + MAX_WBITS) != Z_OK) throw std::bad_alloc();
        const std::unique_ptr<z_stream, decltype(end)> release(&stream, end);
        const size_t left = bytes.size() - place;
        if (left > UINT_MAX) damaged(name, "gzip", "more than 4 GiB compressed");
        stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.data() + place));
        stream.avail_in = static_cast<uInt>(left);
        inflate_member(&stream, name, &plain);
        place = bytes.size() - stream.avail_in;
    }
    return plain;
}

static std::string expand_zstd(const std::string &bytes, const std::string &name)
{
    const std::unique_ptr<ZSTD_DStream, size_t (*)(ZSTD_DStream *)> stream(ZSTD_createDStream(),
                                                                           ZSTD_freeDStream);
    if (!stream) throw std::bad_alloc();
    std::string plain;
    ZSTD_inBuffer in = {bytes.data(), bytes.size(), 0};
    size_t wanted = 1, made = 1; // wanted is 0 at the end of a frame
    while (in.pos < in.size || (wanted > 0 && made > 0)) {
        const size_t size = plain.size();
        plain.resize(size + BLOCK);
        ZSTD_outBuffer out = {plain.data() + size, BLOCK, 0};
        wanted = ZSTD_decompressStream(stream.get(), &out, &in);
        plain.resize(size + out.pos);
        if (ZSTD_isError(wanted)) damaged(name, "zstd", ZSTD_getErrorName(wanted));
        made = out.pos;
    }
    if (wanted > 0) damaged(name, "zstd", "the file ends too early");
    return plain;
}

std::string read_whole(const std::string &name)
{
    std::string bytes = read_bytes(name);
    if (gzip_begins(bytes, 0)) return expand_gzip(bytes, name);
    if (bytes.compare(0, 4, "\x28\xb5\x2f\xfd") == 0) return expand_zstd(bytes, name);
    return bytes;
}
