#include "png_chunks.h"

#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <new>
#include <utility>

#include "big_endian.h"
#include "byte_text.h"
#include "image_resources.h"

namespace tarvo::host {

namespace {

constexpr std::string_view kXmpKeyword = "XML:com.adobe.xmp";
constexpr std::string_view kRawKeyword = "Raw profile type ";
constexpr std::string_view kExifMark{"Exif\0\0", 6};
constexpr std::string_view kXmpMark{"http://ns.adobe.com/xap/1.0/\0", 29};

// Two digits a byte, line ends, and what stands before the digits.
constexpr std::size_t kMostRawText = kMostMetadataBytes * 2 + kMostMetadataBytes / 16 + 1024;
constexpr std::size_t kBytesInALine = 36;

// Takes what comes before the first zero byte, and that byte. Takes nothing if there is none.
std::span<const std::uint8_t> take_string(std::span<const std::uint8_t>& data) {
    const std::size_t length = as_text(data).find('\0');
    if (length == std::string_view::npos) return {};
    const auto string = data.first(length);
    data = data.subspan(length + 1);
    return string;
}

int digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// Line end, type, line end, the number of bytes, line end, so many digits with line ends between. Returns nothing if
// there are fewer.
Bytes bytes_of_raw_profile(std::string_view text) {
    const std::size_t behind_type = text.find('\n', 1);
    if (behind_type == text.npos) return {};
    text.remove_prefix(std::min(text.find_first_not_of(' ', behind_type + 1), text.size()));
    std::size_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error != std::errc() || count > text.size() / 2) return {};
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    Bytes bytes;
    bytes.reserve(count);
    int high = -1;
    for (const char c : text) {
        if (bytes.size() == count) break;
        const int value = digit(c);
        if (value < 0) continue;
        if (high >= 0) bytes.push_back(static_cast<std::uint8_t>(high << 4 | value));
        high = high >= 0 ? -1 : value;
    }
    return bytes.size() == count ? bytes : Bytes();
}

std::string raw_profile(std::string_view type, const Bytes& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    const std::string count = std::to_string(bytes.size());
    std::string text =
        "\n" + std::string(type) + "\n" + std::string(8 - std::min<std::size_t>(count.size(), 8), ' ') + count;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i % kBytesInALine == 0) text += '\n';
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text + "\n";
}

void append_packed(Bytes& to, std::span<const std::uint8_t> bytes) {
    uLongf size = compressBound(bytes.size());
    const std::size_t place = to.size();
    to.resize(place + size);
    // Nothing but memory can be missing.
    if (compress(to.data() + place, &size, bytes.data(), bytes.size()) != Z_OK) throw std::bad_alloc();
    to.resize(place + size);
}

// A chunk that begins with a name and a zero byte.
PngChunk named_chunk(std::string_view chunk, std::string_view name) {
    PngChunk made{chunk, {}};
    append_text(made.data, name);
    made.data.push_back(0);
    return made;
}

}  // namespace

// Returns nothing when the stream is damaged or longer than that.
Bytes PngChunks::unpacked(std::span<const std::uint8_t> stream, std::size_t most) {
    if (streams_ == kMostPngStreams) {
        too_large_ = true;
        return {};
    }
    ++streams_;
    z_stream state = {};
    if (inflateInit(&state) != Z_OK) throw std::bad_alloc();
    const std::unique_ptr<z_stream, int (*)(z_stream*)> ended(&state, inflateEnd);
    state.next_in = const_cast<std::uint8_t*>(stream.data());  // which only reads
    state.avail_in = static_cast<uInt>(stream.size());
    Bytes bytes;
    int result = Z_OK;
    while (result == Z_OK && bytes.size() <= most) {
        constexpr std::size_t kStep = std::size_t{1} << 16;
        const std::size_t filled = bytes.size();
        bytes.resize(filled + kStep);
        state.next_out = bytes.data() + filled;
        state.avail_out = kStep;
        result = inflate(&state, Z_NO_FLUSH);
        bytes.resize(filled + kStep - state.avail_out);
    }
    too_large_ = too_large_ || bytes.size() > most;
    damaged_ = damaged_ || (result != Z_OK && result != Z_STREAM_END);
    if (result != Z_STREAM_END || bytes.size() > most) return {};
    return bytes;
}

void PngChunks::keep(Bytes& to, std::span<const std::uint8_t> bytes) {
    too_large_ = too_large_ || bytes.size() > kMostMetadataBytes;
    if (to.empty() && bytes.size() <= kMostMetadataBytes) to.assign(bytes.begin(), bytes.end());
}

void PngChunks::add(std::string_view name, std::span<const std::uint8_t> data) {
    if (name == "eXIf") keep(found_.exif, data);
    if (name == "iCCP") add_profile(data);
    if (name == "pHYs") add_resolution(data);
    if (name == "tEXt") add_text(data, false);
    if (name == "zTXt") add_text(data, true);
    if (name == "iTXt") add_international_text(data);
}

void PngChunks::add_profile(std::span<const std::uint8_t> data) {
    take_string(data);
    if (!found_.icc.empty() || data.empty() || data[0] != 0) return;
    keep(found_.icc, unpacked(data.subspan(1), kMostMetadataBytes));
}

void PngChunks::add_text(std::span<const std::uint8_t> data, bool compressed) {
    auto keyword = take_string(data);
    if (!take_start(keyword, kRawKeyword)) return;
    if (!compressed) return add_raw_profile(as_text(keyword), as_text(data));
    if (data.empty() || data[0] != 0) return;
    add_raw_profile(as_text(keyword), as_text(unpacked(data.subspan(1), kMostRawText)));
}

void PngChunks::add_international_text(std::span<const std::uint8_t> data) {
    if (as_text(take_string(data)) != kXmpKeyword || data.size() < 2 || !found_.xmp.empty()) return;
    const bool compressed = data[0] != 0;
    data = data.subspan(2);
    take_string(data);  // the language
    take_string(data);  // the keyword in it
    if (compressed)
        keep(found_.xmp, unpacked(data, kMostMetadataBytes));
    else
        keep(found_.xmp, data);
}

void PngChunks::add_raw_profile(std::string_view type, std::string_view text) {
    const Bytes whole = bytes_of_raw_profile(text);
    std::span<const std::uint8_t> bytes = whole;
    damaged_ = damaged_ || bytes.empty();
    if (type == "exif" || type == "APP1" || type == "xmp") {
        if (take_start(bytes, kExifMark) || type == "exif") return keep(raw_.exif, bytes);
        if (take_start(bytes, kXmpMark) || type == "xmp") keep(raw_.xmp, bytes);
    } else if (type == "iptc" || type == "8bim" || type == "APP13") {
        keep(raw_.iptc, resources_in(bytes));
    } else if (type == "icc" || type == "icm") {
        keep(raw_.icc, bytes);
    }
}

void PngChunks::add_resolution(std::span<const std::uint8_t> data) {
    if (data.size() != 9 || found_.resolution) return;
    const double x = big_endian(data, 0, 4), y = big_endian(data, 4, 4);
    if (x > 0 && y > 0) found_.resolution = {x, y, data[8] == 1 ? Resolution::Unit::metre : Resolution::Unit::none};
}

std::span<const std::uint8_t> PngChunks::exif() const { return found_.exif.empty() ? raw_.exif : found_.exif; }

std::span<const std::uint8_t> PngChunks::profile() const { return found_.icc.empty() ? raw_.icc : found_.icc; }

Metadata PngChunks::finish(Losses& losses) {
    if (damaged_) losses.push_back({Loss::Kind::metadata, "has metadata that are damaged: they are left out"});
    if (too_large_) losses.push_back(too_much_metadata());
    for (Bytes Metadata::*kind : {&Metadata::exif, &Metadata::xmp, &Metadata::iptc, &Metadata::icc})
        if ((found_.*kind).empty()) found_.*kind = std::move(raw_.*kind);
    return std::move(found_);
}

std::vector<PngChunk> chunks_of(const Metadata& metadata) {
    std::vector<PngChunk> chunks;
    if (!metadata.icc.empty()) {
        chunks.push_back(named_chunk("iCCP", "icc"));
        chunks.back().data.push_back(0);  // the only way to compress
        append_packed(chunks.back().data, metadata.icc);
    }
    if (metadata.resolution) {
        const Resolution wanted = metadata.resolution->in(Resolution::Unit::metre);
        chunks.push_back({"pHYs", {}});
        for (const double number : {wanted.x, wanted.y})
            append_big_endian(chunks.back().data, static_cast<std::uint32_t>(std::lround(number)), 4);
        chunks.back().data.push_back(wanted.unit == Resolution::Unit::metre);
    }
    if (!metadata.exif.empty()) chunks.push_back({"eXIf", metadata.exif});
    if (!metadata.xmp.empty()) {
        chunks.push_back(named_chunk("iTXt", kXmpKeyword));
        chunks.back().data.insert(chunks.back().data.end(), 4, 0);  // not compressed, and two empty strings
        chunks.back().data.insert(chunks.back().data.end(), metadata.xmp.begin(), metadata.xmp.end());
    }
    if (!metadata.iptc.empty()) {
        chunks.push_back(named_chunk("zTXt", std::string(kRawKeyword) + "iptc"));
        chunks.back().data.push_back(0);
        append_packed(chunks.back().data, as_bytes(raw_profile("iptc", metadata.iptc)));
    }
    return chunks;
}

}  // namespace tarvo::host
