#include "png_samples.h"

namespace tarvo::host {

namespace {

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& to, const Bytes& bytes) { to.insert(to.end(), bytes.begin(), bytes.end()); }

Bytes word32(std::uint32_t v) {
    return {static_cast<std::uint8_t>(v >> 24), static_cast<std::uint8_t>(v >> 16), static_cast<std::uint8_t>(v >> 8),
            static_cast<std::uint8_t>(v)};
}

std::uint32_t crc_of(const Bytes& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

void append_chunk(Bytes& file, const std::string& type, const Bytes& data) {
    append(file, word32(static_cast<std::uint32_t>(data.size())));
    Bytes body(type.begin(), type.end());
    append(body, data);
    append(file, body);
    append(file, word32(crc_of(body)));
}

// One stored block: at most 65,535 bytes.
Bytes uncompressed_stream(const Bytes& data) {
    const auto size = static_cast<std::uint16_t>(data.size());
    Bytes stream = {0x78,
                    0x01,
                    0x01,
                    static_cast<std::uint8_t>(size),
                    static_cast<std::uint8_t>(size >> 8),
                    static_cast<std::uint8_t>(~size),
                    static_cast<std::uint8_t>(~size >> 8)};
    append(stream, data);
    std::uint32_t a = 1, b = 0;
    for (const std::uint8_t byte : data) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    append(stream, word32(b << 16 | a));
    return stream;
}

}  // namespace

std::vector<std::uint8_t> png_file(const PngSample& sample) {
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header = word32(sample.width);
    append(header, word32(sample.height));
    append(header, {static_cast<std::uint8_t>(sample.bit_depth), static_cast<std::uint8_t>(sample.color_type), 0, 0,
                    sample.interlaced});
    append_chunk(file, "IHDR", header);
    if (!sample.palette.empty()) append_chunk(file, "PLTE", sample.palette);
    if (!sample.clear.empty()) append_chunk(file, "tRNS", sample.clear);
    if (!sample.exif.empty() && !sample.exif_behind) append_chunk(file, "eXIf", sample.exif);
    append_chunk(file, "IDAT", uncompressed_stream(sample.rows));
    if (sample.exif_behind) append_chunk(file, "eXIf", sample.exif);
    append_chunk(file, "IEND", {});
    return file;
}

std::vector<std::uint8_t> exif_of_orientation(int orientation, bool big_endian) {
    const auto value = static_cast<std::uint8_t>(orientation);
    if (big_endian)
        return {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 0x01, 0x12, 0, 3, 0, 0, 0, 1, 0, value, 0, 0, 0, 0, 0, 0};
    return {'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0, 0x12, 0x01, 3, 0, 1, 0, 0, 0, value, 0, 0, 0, 0, 0, 0, 0};
}

}  // namespace tarvo::host
