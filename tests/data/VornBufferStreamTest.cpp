#include <vsupt/VornBufferStream.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;

namespace {

// The payload as it stands behind the header.
std::vector<unsigned char> payloadOf(const VornBufferStream& stream)
{
    const auto* block = static_cast<const unsigned char*>(stream.buffer());
    return std::vector<unsigned char>(block + 8, block + 8 + stream.size());
}

std::vector<unsigned char> bytes(std::initializer_list<int> values)
{
    return std::vector<unsigned char>(values.begin(), values.end());
}

// A block as a peer with 2-byte text lengths sends it.
VornBufferStream receive(const std::vector<unsigned char>& payload)
{
    std::vector<unsigned char> block(8, 0);
    block.insert(block.end(), payload.begin(), payload.end());
    return VornBufferStream(block.data(), static_cast<unsigned int>(block.size()));
}

}  // namespace

TEST(VornBufferStreamTest, NewStreamIsEmptyAndStampsAZeroHeader)
{
    VornBufferStream stream;
    EXPECT_EQ(stream.size(), 0u);
    ASSERT_NE(stream.buffer(), nullptr);
    EXPECT_EQ(std::memcmp(stream.buffer(), "\0\0\0\0\0\0\0\0", 8), 0);
}

TEST(VornBufferStreamTest, IntTakesFourBytesAndBufferStampsTheHeader)
{
    VornBufferStream stream;
    stream << 0x01020304;
    EXPECT_EQ(stream.size(), 4u);
    const auto* block = static_cast<const unsigned char*>(stream.buffer());
    EXPECT_EQ(std::vector<unsigned char>(block, block + 12), bytes({4, 0, 0, 0, 0, 0, 0, 0, 4, 3, 2, 1}));
}

TEST(VornBufferStreamTest, ScalarsComeBackInTheirOwnSizes)
{
    VornBufferStream stream;
    stream << 'x' << static_cast<unsigned char>(200) << -5 << 4000000000u << static_cast<short>(-300)
           << static_cast<unsigned short>(60000) << -1234567890123L << 18000000000000000000UL << 1.5f << -2.25;
    EXPECT_EQ(stream.size(), 1u + 1 + 4 + 4 + 2 + 2 + 8 + 8 + 4 + 8);
    char c = 0;
    unsigned char uc = 0;
    int i = 0;
    unsigned int ui = 0;
    short s = 0;
    unsigned short us = 0;
    long l = 0;
    unsigned long ul = 0;
    float f = 0;
    double d = 0;
    stream >> c >> uc >> i >> ui >> s >> us >> l >> ul >> f >> d;
    EXPECT_EQ(c, 'x');
    EXPECT_EQ(uc, 200);
    EXPECT_EQ(i, -5);
    EXPECT_EQ(ui, 4000000000u);
    EXPECT_EQ(s, -300);
    EXPECT_EQ(us, 60000);
    EXPECT_EQ(l, -1234567890123L);
    EXPECT_EQ(ul, 18000000000000000000UL);
    EXPECT_EQ(f, 1.5f);
    EXPECT_EQ(d, -2.25);
    EXPECT_EQ(stream.size(), 0u);
}

TEST(VornBufferStreamTest, TextIsWrittenWithAnEightByteLength)
{
    VornBufferStream stream;
    stream << "abc";
    EXPECT_EQ(payloadOf(stream), bytes({3, 0, 0, 0, 0, 0, 0, 0, 'a', 'b', 'c'}));

    VornBufferStream null;
    null << static_cast<const char*>(nullptr);
    EXPECT_EQ(payloadOf(null), bytes({0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(VornBufferStreamTest, NarrowTextEndsAtItsFirstNulWideTextDoesNot)
{
    VornBufferStream narrow;
    narrow << std::string("a\0b", 3);
    EXPECT_EQ(payloadOf(narrow), bytes({1, 0, 0, 0, 0, 0, 0, 0, 'a'}));

    VornBufferStream wide;
    wide << std::wstring(L"a\0b", 3);
    EXPECT_EQ(payloadOf(wide),
              bytes({3, 0, 0, 0, 0, 0, 0, 0, 'a', 0, 0, 0, 0, 0, 0, 0, 'b', 0, 0, 0}));
}

TEST(VornBufferStreamTest, TextIsReadWithATwoByteLength)
{
    VornBufferStream stream = receive(bytes({3, 0, 'a', 'b', 'c', 2, 0, 'x', 'y', 1, 0, 'w', 0, 0, 0}));
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
    VornBufferStream stream = receive(bytes({0, 0, 0, 0, 0xff, 0xff, 'a'}));
    std::string text = "kept";
    std::wstring wide = L"kept";
    stream >> text >> wide;
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(wide, L"kept");
    char* raw = nullptr;
    stream >> raw;
    EXPECT_EQ(raw, nullptr);
    EXPECT_EQ(stream.size(), 1u);
}

TEST(VornBufferStreamTest, ShortReadHandsOverWhatThereIs)
{
    VornBufferStream stream;
    stream << static_cast<short>(0x0102);
    char target[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    EXPECT_EQ(stream.read(target, 4, 2), 2u);
    EXPECT_EQ(target[0], 2);
    EXPECT_EQ(target[2], 9);
    EXPECT_EQ(stream.size(), 0u);

    int value = 42;
    stream >> value;
    EXPECT_EQ(value, 42);
}

TEST(VornBufferStreamTest, PeekLeavesTheBytesReadTakesThemOnce)
{
    VornBufferStream stream;
    stream << 1 << 2;
    int first = 0;
    int again = 0;
    EXPECT_EQ(stream.peek(&first, sizeof first, 1), 4u);
    EXPECT_EQ(stream.peek(&again, sizeof again, 1), 4u);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(again, 1);
    int read = 0;
    stream >> read;
    EXPECT_EQ(read, 1);
    stream >> read;
    EXPECT_EQ(read, 2);
    EXPECT_EQ(stream.size(), 0u);
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
    int first = -1;
    stream >> first;
    EXPECT_EQ(first, 0);
}

TEST(VornBufferStreamTest, FirstWriteJustBelowAStepStillHoldsTheHeader)
{
    for (unsigned long size : {504UL, 505UL, 511UL, 512UL, 1000UL}) {
        VornBufferStream stream;
        const std::vector<char> written(size, 'z');
        EXPECT_EQ(stream.write(written.data(), 1, size), size);
        std::vector<char> read(size);
        EXPECT_EQ(stream.read(read.data(), 1, size), size);
        EXPECT_EQ(read, written);
    }
}

TEST(VornBufferStreamTest, SmallStepsGrowAsNeeded)
{
    VornBufferStream stream(3);
    stream << 1.0 << 2.0;
    double a = 0;
    double b = 0;
    stream >> a >> b;
    EXPECT_EQ(a, 1.0);
    EXPECT_EQ(b, 2.0);
}

TEST(VornBufferStreamTest, ReceivedBlockReadsTheSamePayloadAndLeavesTheSourceAlone)
{
    VornBufferStream source;
    source << 5 << "text" << 2.5;
    VornBufferStream received(source.buffer(), static_cast<unsigned int>(source.size() + 8));
    EXPECT_EQ(payloadOf(received), payloadOf(source));
    int number = 0;
    received >> number;
    EXPECT_EQ(number, 5);
    EXPECT_EQ(source.size(), 4u + 8 + 4 + 8);
}

TEST(VornBufferStreamTest, ReceivedBlockShorterThanTheHeaderIsEmpty)
{
    const char block[3] = {1, 2, 3};
    VornBufferStream stream(const_cast<char*>(block), 3);
    EXPECT_EQ(stream.size(), 0u);
    stream << 9;
    int value = 0;
    stream >> value;
    EXPECT_EQ(value, 9);
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
    EXPECT_EQ(original.size(), 4u);
    EXPECT_EQ(copy.size(), 4u);
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
    int expected = 0;
    while (expected < count) {
        int value = -1;
        if (stream.read(&value, sizeof value, 1) == sizeof value) {
            ASSERT_EQ(value, expected);
            ++expected;
        }
    }
    writer.join();
}
