#pragma once

// Bytes and pixels on their way, with a caller who is asked before each piece whether it goes on: what it throws ends
// the work.

#include <exception>
#include <functional>

#include "byte_sink.h"
#include "byte_source.h"
#include "image.h"

namespace tarvo::host {

// Gives another source's bytes in pieces that decoders are soon through with.
class WatchedSource final : public ByteSource {
public:
    WatchedSource(ByteSource& of, const std::function<void()>& ask) : places_(of.places(), ask), of_(of), ask_(ask) {}

    const BytePlaces* places() const override { return places_.if_there(); }

private:
    static constexpr std::size_t kPiece = std::size_t{1} << 14;

    std::span<const std::uint8_t> next_block() override {
        ask_();
        const auto block = of_.ahead();
        const auto piece = block.first(std::min(block.size(), kPiece));
        of_.skip(piece.size());
        return piece;
    }
    std::optional<std::uint64_t> behind_block() const override { return of_.left(); }

    // Of what is read at any place.
    class Places final : public BytePlaces {
    public:
        Places(const BytePlaces* of, const std::function<void()>& ask) : of_(of), ask_(ask) {}
        const BytePlaces* if_there() const { return of_ ? this : nullptr; }
        std::uint64_t size() const override { return of_->size(); }
        bool read_at(std::uint64_t place, std::span<std::uint8_t> out) const override {
            ask_();
            return of_->read_at(place, out);
        }

    private:
        const BytePlaces* of_;
        const std::function<void()>& ask_;
    };

    const Places places_;
    ByteSource& of_;
    const std::function<void()>& ask_;
};

// Encoders take a row where they cannot be stopped: what is thrown waits for the next bytes that they write.
class WatchedPixels final : public PixelSource {
public:
    WatchedPixels(const PixelSource& of, const std::function<void()>& ask) : of_(of), ask_(ask) {}

    const ImageForm& form() const override { return of_.form(); }
    void read(int y, std::uint8_t* row) const noexcept override {
        of_.read(y, row);
        if (thrown_) return;
        try {
            ask_();
        } catch (...) {
            thrown_ = std::current_exception();
        }
    }
    void rethrow() const {
        if (thrown_) std::rethrow_exception(thrown_);
    }

private:
    const PixelSource& of_;
    const std::function<void()>& ask_;
    mutable std::exception_ptr thrown_;
};

// Passes bytes on to another sink.
class WatchedSink final : public ByteSink {
public:
    WatchedSink(ByteSink& to, const WatchedPixels& pixels, const std::function<void()>& ask)
        : to_(to), pixels_(pixels), ask_(ask) {}

private:
    void take(std::span<const std::uint8_t> block) override {
        pixels_.rethrow();
        ask_();
        to_.write(block);
    }
    void put_at(std::uint64_t place, std::span<const std::uint8_t> bytes) override { to_.replace(place, bytes); }

    ByteSink& to_;
    const WatchedPixels& pixels_;
    const std::function<void()>& ask_;
};

}  // namespace tarvo::host
