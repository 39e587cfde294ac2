#include "w32/GrowingBuffer.h"

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {
using w32::BufferAnswer;
using w32::FillGrowingBuffer;

// A call that needs room for `text` and says so, as GetComputerNameW does.
struct SizeTellingCall {
    std::wstring text;
    std::vector<std::size_t> sizesSeen;
    BufferAnswer operator()(std::wstring& buffer) {
        sizesSeen.push_back(buffer.size());
        if (buffer.size() < text.size()) return BufferAnswer::TooSmall(text.size());
        buffer.replace(0, text.size(), text);
        return BufferAnswer::Filled(text.size());
    }
};
}  // namespace

TEST(GrowingBuffer, ResultThatFitsIsReturnedAfterOneAsk) {
    SizeTellingCall call{L"PC1", {}};
    EXPECT_EQ(FillGrowingBuffer<std::wstring>(16, 2, std::ref(call)), std::wstring(L"PC1"));
    EXPECT_EQ(call.sizesSeen, (std::vector<std::size_t>{16}));
}

TEST(GrowingBuffer, TooSmallBufferIsRegrownToTheAnnouncedSize) {
    SizeTellingCall call{L"a-much-longer-name", {}};
    EXPECT_EQ(FillGrowingBuffer<std::wstring>(4, 2, std::ref(call)), std::wstring(L"a-much-longer-name"));
    EXPECT_EQ(call.sizesSeen, (std::vector<std::size_t>{4, 18}));
}

TEST(GrowingBuffer, FirstAskWithoutBufferOnlyLearnsTheSize) {
    SizeTellingCall call{L"C:\\windows", {}};
    EXPECT_EQ(FillGrowingBuffer<std::wstring>(0, 2, std::ref(call)), std::wstring(L"C:\\windows"));
    EXPECT_EQ(call.sizesSeen, (std::vector<std::size_t>{0, 10}));
}

TEST(GrowingBuffer, FailureGivesNothing) {
    int asks = 0;
    const auto result = FillGrowingBuffer<std::vector<unsigned char>>(8, 2, [&](std::vector<unsigned char>&) {
        ++asks;
        return BufferAnswer::Failed();
    });
    EXPECT_FALSE(result.has_value());
    EXPECT_EQ(asks, 1);
}

TEST(GrowingBuffer, AskingForNoMoreThanItHadGivesNothing) {
    int asks = 0;
    const auto result = FillGrowingBuffer<std::wstring>(8, w32::kAskWhileGrowing, [&](std::wstring&) {
        ++asks;
        return BufferAnswer::TooSmall(8);
    });
    EXPECT_FALSE(result.has_value());
    EXPECT_EQ(asks, 1);
}

TEST(GrowingBuffer, StillTooSmallAfterTheLastAskGivesNothing) {
    std::vector<std::size_t> sizes;
    const auto result = FillGrowingBuffer<std::wstring>(4, 2, [&](std::wstring& buffer) {
        sizes.push_back(buffer.size());
        return BufferAnswer::TooSmall(buffer.size() + 1);
    });
    EXPECT_FALSE(result.has_value());
    EXPECT_EQ(sizes, (std::vector<std::size_t>{4, 5}));
}

TEST(GrowingBuffer, DoublingCallIsAskedUntilItFits) {
    const std::wstring path(1000, L'x');
    std::vector<std::size_t> sizes;
    const auto result = FillGrowingBuffer<std::wstring>(260, w32::kAskWhileGrowing, [&](std::wstring& buffer) {
        sizes.push_back(buffer.size());
        if (buffer.size() <= path.size()) return BufferAnswer::TooSmall(buffer.size() * 2);
        buffer.replace(0, path.size(), path);
        return BufferAnswer::Filled(path.size());
    });
    EXPECT_EQ(result, path);
    EXPECT_EQ(sizes, (std::vector<std::size_t>{260, 520, 1040}));
}

TEST(GrowingBuffer, FilledSizeBeyondTheBufferIsCutToTheBuffer) {
    const auto result = FillGrowingBuffer<std::wstring>(3, 1, [](std::wstring& buffer) {
        buffer = L"abc";
        return BufferAnswer::Filled(99);
    });
    EXPECT_EQ(result, std::wstring(L"abc"));
}

TEST(GrowingBuffer, EachAskStartsFromAZeroedBuffer) {
    std::vector<std::vector<unsigned char>> seen;
    FillGrowingBuffer<std::vector<unsigned char>>(2, 2, [&](std::vector<unsigned char>& buffer) {
        seen.push_back(buffer);
        buffer.assign(buffer.size(), 0xAB);
        return buffer.size() < 3 ? BufferAnswer::TooSmall(3) : BufferAnswer::Filled(3);
    });
    EXPECT_EQ(seen, (std::vector<std::vector<unsigned char>>{{0, 0}, {0, 0, 0}}));
}
