#include "capture/frame_batcher.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace tevra {
namespace {

TEST(FrameBatcher, RegroupsPiecesIntoBuffersBetweenTheBoundsKeepingEveryFrameInOrder) {
    std::vector<std::size_t> sizes;
    std::vector<float> received;
    FrameBatcher batcher(2, 480, 4096, [&](const float* frames, std::size_t count) {
        sizes.push_back(count);
        received.insert(received.end(), frames, frames + count * 2);
    });
    std::vector<float> sent(2 * 20000);
    std::iota(sent.begin(), sent.end(), 0.0f);
    // Small pieces are gathered; a large one is cut; an exact one passes as is.
    std::size_t at = 0;
    for (const std::size_t piece : {120, 120, 120, 119, 2, 10000, 480, 0, 7}) {
        batcher.add(sent.data() + at * 2, piece);
        at += piece;
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{481, 4096, 4096, 1808, 480}));
    EXPECT_TRUE(std::equal(received.begin(), received.end(), sent.begin()));
    EXPECT_EQ(received.size(), (at - 7) * 2) << "the last 7 frames wait for more";
    batcher.flush();
    EXPECT_EQ(sizes.back(), 7u);
    EXPECT_TRUE(std::equal(received.begin(), received.end(), sent.begin(), sent.begin() + at * 2));
    batcher.flush();
    EXPECT_EQ(sizes.size(), 6u) << "nothing left to hand over";
}

}  // namespace
}  // namespace tevra
