#include <vsupt/VornBufferStream.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes blockOf(const VornBufferStream& stream)
{
    const auto* block = static_cast<const unsigned char*>(stream.buffer());
    return Bytes(block, block + 8 + stream.size());
}

Bytes payloadOf(const VornBufferStream& stream)
{
    const Bytes block = blockOf(stream);
    return Bytes(block.begin() + 8, block.end());
}

// A block as a peer with 2-byte text lengths sends it.
VornBufferStream receive(Bytes payload)
{
    payload.insert(payload.begin(), 8, 0);
    return VornBufferStream(payload.data(), static_cast<unsigned int>(payload.size()));
}

template <class T>
T readBack(VornBufferStream& stream)
{
    T value{};
    stream >> value;
    return value;
}

}  // namespace

TEST(VornBufferStreamTest, BufferStampsThePayloadSizeInTheHeader)
{
    VornBufferStream stream;
    EXPECT_EQ(stream.size(), 0u);
    EXPECT_EQ(blockOf(stream), Bytes(8, 0));
    stream << 0x01020304;
    EXPECT_EQ(stream.size(), 4u);
    EXPECT_EQ(blockOf(stream), (Bytes{4, 0, 0, 0, 0, 0, 0, 0, 4, 3, 2, 1}));
}

TEST(VornBufferStreamTest, ScalarsComeBackInTheirOwnSizes)
{
    VornBufferStream stream;
    stream << 'x' << static_cast<unsigned char>(200) << static_cast<short>(-300) << static_cast<unsigned short>(60000)
           << -5 << 4000000000u << -1234567890123L << 18000000000000000000UL << 1.5f << -2.25;
    EXPECT_EQ(stream.size(), 1u + 1 + 2 + 2 + 4 + 4 + 8 + 8 + 4 + 8);
    EXPECT_EQ(readBack<char>(stream), 'x');
    EXPECT_EQ(readBack<unsigned char>(stream), 200);
    EXPECT_EQ(readBack<short>(stream), -300);
    EXPECT_EQ(readBack<unsigned short>(stream), 60000);
    EXPECT_EQ(readBack<int>(stream), -5);
    EXPECT_EQ(readBack<unsigned int>(stream), 4000000000u);
    EXPECT_EQ(readBack<long>(stream), -1234567890123L);
    EXPECT_EQ(readBack<unsigned long>(stream), 18000000000000000000UL);
    EXPECT_EQ(readBack<float>(stream), 1.5f);
    EXPECT_EQ(readBack<double>(stream), -2.25);
    EXPECT_EQ(stream.size(), 0u);
}

TEST(VornBufferStreamTest, TextIsWrittenWithAnEightByteLengthNarrowTextUpToItsFirstNul)
{
    VornBufferStream stream;
    stream << "abc" << static_cast<const char*>(nullptr) << std::string("a\0b", 3) << std::wstring(L"a\0b", 3);
    const Bytes expected = {3, 0, 0, 0, 0, 0, 0, 0, 'a', 'b', 'c',  //
                            0, 0, 0, 0, 0, 0, 0, 0,                  //
                            1, 0, 0, 0, 0, 0, 0, 0, 'a',             //
                            3, 0, 0, 0, 0, 0, 0, 0, 'a', 0, 0, 0, 0, 0, 0, 0, 'b', 0, 0, 0};
    EXPECT_EQ(payloadOf(stream), expected);
}

TEST(VornBufferStreamTest, TextIsReadWithATwoByteLength)
{
    VornBufferStream stream = receive({3, 0, 'a', 'b', 'c', 2, 0, 'x', 'y', 1, 0, 'w', 0, 0, 0});
    std::string text;
    char* raw = nullptr;
    std::wstring wide;
    stream >> text >> raw >> wide;
    EXPECT_EQ(text, "abc");
    ASSERT_NE(raw, nullptr);
    EXPECT_STREQ(raw, "xy");
    delete[] raw;
    EXPECT_EQ(wide, L"w");
}

TEST(VornBufferStreamTest, TextWrittenAndReadOnOneStreamComesBackEmptySixBytesShort)
{
    VornBufferStream stream;
    stream << "abc" << 7;
    std::string text = "old";
    stream >> text;
    EXPECT_EQ(text, "");
    EXPECT_EQ(stream.size(), 11u + 4 - 2 - 3);
}

TEST(VornBufferStreamTest, ZeroOrNegativeLengthLeavesTheTextAsItWas)
{
    VornBufferStream stream = receive({0, 0, 0, 0, 0xff, 0xff, 'a'});
    std::string text = "kept";
    std::wstring wide = L"kept";
    char* raw = nullptr;
    stream >> text >> wide >> raw;
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(wide, L"kept");
    EXPECT_EQ(raw, nullptr);
    EXPECT_EQ(stream.size(), 1u);
}

TEST(VornBufferStreamTest, PeekLeavesTheBytesReadTakesThemAndBothHandOverWhatThereIs)
{
    VornBufferStream stream;
    stream << 1 << static_cast<short>(0x0102);
    int peeked[2] = {};
    EXPECT_EQ(stream.peek(&peeked[0], sizeof(int), 1), 4u);
    EXPECT_EQ(stream.peek(&peeked[1], sizeof(int), 1), 4u);
    EXPECT_EQ(peeked[0] + peeked[1], 2);
    EXPECT_EQ(readBack<int>(stream), 1);
    char target[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    EXPECT_EQ(stream.read(target, 4, 2), 2u);
    EXPECT_EQ(Bytes(target, target + 3), (Bytes{2, 1, 9}));
    EXPECT_EQ(stream.size(), 0u);
    int value = 42;
    stream >> value;
    EXPECT_EQ(value, 42);
}

TEST(VornBufferStreamTest, ResetForgetsThePayloadAndKeepsTheBlock)
{
    VornBufferStream stream;
    stream << 1 << 2;
    const void* block = stream.buffer();
    stream.reset();
    EXPECT_EQ(stream.size(), 0u);
    for (int i = 0; i < 100; ++i) {
        stream << i;
    }
    EXPECT_EQ(stream.buffer(), block);
    EXPECT_EQ(readBack<int>(stream), 0);
}

TEST(VornBufferStreamTest, FirstWritesNearAStepStillLeaveRoomForTheHeader)
{
    for (unsigned long step : {512UL, 3UL}) {
        for (unsigned long size : {1UL, 504UL, 505UL, 511UL, 512UL, 1000UL}) {
            VornBufferStream stream(step);
            const std::vector<char> written(size, 'z');
            EXPECT_EQ(stream.write(written.data(), 1, size), size);
            std::vector<char> read(size);
            EXPECT_EQ(stream.read(read.data(), 1, size), size);
            EXPECT_EQ(read, written);
        }
    }
}

TEST(VornBufferStreamTest, ReceivedBlockReadsTheSamePayloadAndLeavesTheSourceAlone)
{
    VornBufferStream source;
    source << 5 << "text" << 2.5;
    VornBufferStream received(source.buffer(), static_cast<unsigned int>(source.size() + 8));
    EXPECT_EQ(payloadOf(received), payloadOf(source));
    EXPECT_EQ(readBack<int>(received), 5);
    EXPECT_EQ(source.size(), 4u + 8 + 4 + 8);

    char tooShort[3] = {1, 2, 3};
    EXPECT_EQ(VornBufferStream(tooShort, 3).size(), 0u);
}

TEST(VornBufferStreamTest, CopiesAndAssignmentsOwnTheirBlocks)
{
    VornBufferStream original;
    original << 1 << 2;
    VornBufferStream copy(original);
    VornBufferStream assigned;
    assigned << 99;
    assigned = original;
    int value = 0;
    original >> value;
    copy >> value;
    EXPECT_EQ(value, 1);
    assigned >> value >> value;
    EXPECT_EQ(value, 2);
    EXPECT_EQ(original.size() + copy.size() + assigned.size(), 8u);
}

TEST(VornBufferStreamTest, OneThreadReadsWhatAnotherWrites)
{
    VornBufferStream stream;
    const int count = 20000;
    std::thread writer([&] {
        for (int i = 0; i < count; ++i) {
            stream << i;
        }
    });
    for (int expected = 0; expected < count;) {
        int value = -1;
        if (stream.read(&value, sizeof value, 1) == sizeof value) {
            ASSERT_EQ(value, expected++);
        }
    }
    writer.join();
}
