#include "deflate_bands.h"

#include <zlib.h>

#include <new>

#ifdef TARVO_LIBDEFLATE
#include <libdeflate.h>
#endif

namespace tarvo::host {

namespace {

constexpr int kRaw = -MAX_WBITS;                            // without a header and a check sum
constexpr std::uint8_t kEnd[] = {3, 0};                     // a last block, of no bytes
constexpr std::uint8_t kEmptyBlock[] = {0, 0, 0xFF, 0xFF};  // of stored bytes: what is behind its header's three bits
constexpr std::size_t kMostOfAnEnd = 1 + sizeof kEmptyBlock;

#ifdef TARVO_LIBDEFLATE
// What zlib calls it that a block has ended, and that it was the last.
constexpr int kBlockEnded = 128, kLastBlock = 64;
#endif

void require(int status) {
    if (status == Z_MEM_ERROR) throw std::bad_alloc();
}

uInt as_size(std::size_t size) { return static_cast<uInt>(size); }

Bytef* input(std::span<const std::uint8_t> data) { return const_cast<Bytef*>(data.data()); }

// Where the last block of a stream begins and ends, in bits.
struct LastBlock {
    std::size_t begin, end;
};

int level_of(Compression effort) {
    switch (effort) {
        case Compression::fast: return 1;
        case Compression::normal: break;
        case Compression::small: return 9;
    }
    return 6;
}

int strategy_of(DeflateBands::Coding coding) {
    switch (coding) {
        case DeflateBands::Coding::literals: return Z_HUFFMAN_ONLY;
        case DeflateBands::Coding::runs: return Z_RLE;
        case DeflateBands::Coding::matches: break;
    }
    return Z_DEFAULT_STRATEGY;
}

class Deflater {
public:
    explicit Deflater(Compression effort) : level_(level_of(effort)) {
        require(deflateInit2(&stream_, level_, Z_DEFLATED, kRaw, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY));
    }
    ~Deflater() { deflateEnd(&stream_); }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    void deflate_band(std::span<const std::uint8_t> data, int strategy, Bytes& out) {
        deflateReset(&stream_);
        deflateParams(&stream_, level_, strategy);
        out.resize(deflateBound(&stream_, as_size(data.size())) + kMostOfAnEnd);
        stream_.next_in = input(data);
        stream_.avail_in = as_size(data.size());
        stream_.next_out = out.data();
        stream_.avail_out = as_size(out.size());
        deflate(&stream_, Z_FULL_FLUSH);
        out.resize(stream_.total_out);
    }

private:
    const int level_;
    z_stream stream_ = {};
};

#ifdef TARVO_LIBDEFLATE
class BlockFinder {
public:
    BlockFinder() { require(inflateInit2(&stream_, kRaw)); }
    ~BlockFinder() { inflateEnd(&stream_); }
    BlockFinder(const BlockFinder&) = delete;
    BlockFinder& operator=(const BlockFinder&) = delete;

    // Of a whole stream.
    LastBlock last_block(std::span<const std::uint8_t> stream) {
        inflateReset(&stream_);
        stream_.data_type = 0;
        stream_.next_in = input(stream);
        stream_.avail_in = as_size(stream.size());
        LastBlock found{};
        while (!(stream_.data_type & kLastBlock)) {
            found.begin = found.end;
            do {
                stream_.next_out = unused_;
                stream_.avail_out = sizeof unused_;
                if (inflate(&stream_, Z_BLOCK) < 0) throw std::bad_alloc();  // its window is all that can fail
            } while (!(stream_.data_type & kBlockEnded));
            found.end = stream_.total_in * 8 - static_cast<unsigned>(stream_.data_type & 7);
        }
        return found;
    }

private:
    z_stream stream_ = {};
    std::uint8_t unused_[std::size_t{1} << 15];
};

struct FreeCompressor {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};
#endif

}  // namespace

struct DeflateBands::Libraries {
    explicit Libraries(Compression effort) : deflater(effort) {
#ifdef TARVO_LIBDEFLATE
        compressor.reset(libdeflate_alloc_compressor(level_of(effort)));
        if (!compressor) throw std::bad_alloc();
#endif
    }

    Deflater deflater;
#ifdef TARVO_LIBDEFLATE
    BlockFinder finder;
    std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor;
#endif
};

DeflateBands::DeflateBands(Compression effort) : libraries_(std::make_unique<Libraries>(effort)) {}

DeflateBands::~DeflateBands() = default;

void DeflateBands::deflate(std::span<const std::uint8_t> data, Coding coding, Bytes& out) {
#ifdef TARVO_LIBDEFLATE
    if (coding == Coding::matches) return deflate_matches(data, out);
#endif
    libraries_->deflater.deflate_band(data, strategy_of(coding), out);
}

#ifdef TARVO_LIBDEFLATE
// What libdeflate makes has a last block. Its mark is taken away, and a stored block of nothing brings the end to a
// byte.
void DeflateBands::deflate_matches(std::span<const std::uint8_t> data, Bytes& out) {
    libdeflate_compressor* const compressor = libraries_->compressor.get();
    out.resize(libdeflate_deflate_compress_bound(compressor, data.size()) + kMostOfAnEnd);
    out.resize(libdeflate_deflate_compress(compressor, data.data(), data.size(), out.data(), out.size()));
    const LastBlock last = libraries_->finder.last_block(out);
    out[last.begin / 8] = static_cast<std::uint8_t>(out[last.begin / 8] & ~(1u << last.begin % 8));
    const std::size_t with_header = (last.end + 3 + 7) / 8;
    out.resize(with_header);
    out.insert(out.end(), std::begin(kEmptyBlock), std::end(kEmptyBlock));
}
#endif

std::uint32_t DeflateBands::check(std::uint32_t check, std::span<const std::uint8_t> data) {
#ifdef TARVO_LIBDEFLATE
    return libdeflate_adler32(check, data.data(), data.size());
#else
    return static_cast<std::uint32_t>(adler32(check, data.data(), as_size(data.size())));
#endif
}

std::span<const std::uint8_t> DeflateBands::end() { return kEnd; }

}  // namespace tarvo::host
