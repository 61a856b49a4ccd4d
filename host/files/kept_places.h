#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "byte_source.h"
#include "image.h"

namespace tarvo::host {

// A file whose bytes come but once, kept whole for a decoder that reads it here and there.
class KeptPlaces final : public BytePlaces {
public:
    // Takes all that is left. The target may refuse to have so much kept.
    KeptPlaces(ByteSource& file, PixelTarget& target) {
        for (auto block = file.take(); !block.empty(); block = file.take()) {
            for (; !block.empty(); block = block.subspan(append(block)))
                if (size_ == blocks_.size() * kBlock) {
                    target.check_memory(size_ + kBlock, "a file that cannot be read at any place");
                    blocks_.push_back(std::make_unique_for_overwrite<std::uint8_t[]>(kBlock));
                }
        }
    }

    std::uint64_t size() const override { return size_; }
    bool read_at(std::uint64_t place, std::span<std::uint8_t> out) const override {
        if (!has_bytes(size_, place, out.size())) return false;
        while (!out.empty()) {
            const std::size_t in_block = place % kBlock, count = std::min(kBlock - in_block, out.size());
            std::memcpy(out.data(), blocks_[place / kBlock].get() + in_block, count);
            place += count;
            out = out.subspan(count);
        }
        return true;
    }

private:
    static constexpr std::size_t kBlock = std::size_t{1} << 20;

    // Returns how many bytes the last block had room for.
    std::size_t append(std::span<const std::uint8_t> bytes) {
        const std::size_t in_block = size_ % kBlock, count = std::min(kBlock - in_block, bytes.size());
        std::memcpy(blocks_.back().get() + in_block, bytes.data(), count);
        size_ += count;
        return count;
    }

    std::vector<std::unique_ptr<std::uint8_t[]>> blocks_;
    std::size_t size_ = 0;
};

}  // namespace tarvo::host
