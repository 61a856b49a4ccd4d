#pragma once

// The host's pictures of what decoders give.

#include "carried.h"
#include "host.h"
#include "image.h"
#include "orientation.h"

namespace tarvo::host {

// Makes a graphics world of what a decoder gives, of 32 bits. With `keep_depth` an indexed image keeps its indices: one
// bit of black and white gives a 1-bit picture, any other an 8-bit one with the image's colours. Alpha becomes a 32-bit
// mask of greys, 0 where the image is opaque. Throws Refusal.
class PictureBuilder final : public PixelTarget {
public:
    // `draft` says which sizes do instead of a whole one; none does when it is empty.
    PictureBuilder(Host& host, bool keep_depth, DraftRule draft = {})
        : host_(host), keep_depth_(keep_depth), draft_(std::move(draft)) {}

    void check_memory(std::uint64_t bytes, const std::string& what) override { host_.check_memory(bytes, what); }
    bool takes_draft(int whole_width, int whole_height, int width, int height) override {
        return draft_ && draft_(whole_width, whole_height, width, height);
    }
    void begin(const ImageForm& form, std::uint64_t working_bytes) override;
    void put(const PixelRun& run) noexcept override;
    std::uint8_t* stored_row(int y) noexcept override;
    void turn(int orientation) override;

    void carry(Carried&& carried) override { carried_ = std::move(carried); }

    // To be called after the last run: the picture, then what the file had besides, true of it.
    ObjectRef finish() { return std::move(picture_); }
    Carried carried();

private:
    template <Layout layout, class Word>
    void put_as(const PixelRun& run, Picture& seen, Word word) noexcept;
    template <class Word>
    void put_each(const PixelRun& run, Picture& seen, Word word) noexcept;
    void put_words(const PixelRun& run) noexcept;
    void put_alpha(const PixelRun& run) noexcept;
    void put_indices(const PixelRun& run) noexcept;
    void put_bits(const PixelRun& run) noexcept;
    PictureOptions options(int depth) const;
    ObjectRef turned(const Picture& stored, const Turn& turn) const;

    Host& host_;
    const bool keep_depth_;
    const DraftRule draft_;
    ImageForm form_;
    Turn turn_;
    Carried carried_;
    bool begun_ = false;
    ObjectRef picture_;
    Picture* shown_ = nullptr;
    Picture* mask_ = nullptr;
};

}  // namespace tarvo::host
