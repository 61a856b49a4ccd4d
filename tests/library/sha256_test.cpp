// The vectors of FIPS 180-4 and of its examples.

#include "sha256.h"

#include <gtest/gtest.h>

namespace tarvo::library {
namespace {

std::string sum(std::string_view text, std::size_t piece) {
    Sha256 sha;
    for (; !text.empty(); text.remove_prefix(std::min(piece, text.size()))) {
        const std::string_view part = text.substr(0, piece);
        sha.add({reinterpret_cast<const std::uint8_t*>(part.data()), part.size()});
    }
    return sha.finish();
}

TEST(Sha256, GivesTheKnownDigests) {
    const std::pair<std::string, const char*> vectors[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrst"
         "nopqrstu",
         "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1"},
        {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const auto& [text, digest] : vectors)
        for (const std::size_t piece : {1, 3, 63, 64, 65, 1000}) EXPECT_EQ(sum(text, piece), digest) << piece;
}

TEST(Sha256, EndsBlocksOfEveryLength) {
    // Lengths around the place where the length no longer fits the last block: in one piece and in bytes.
    for (std::size_t length = 50; length < 70; ++length) {
        const std::string text(length, 'x');
        EXPECT_EQ(sum(text, 1), sum(text, length));
    }
}

}  // namespace
}  // namespace tarvo::library
