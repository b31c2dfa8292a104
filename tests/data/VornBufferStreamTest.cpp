#include <vsupt/VornBufferStream.h>

#include <gtest/gtest.h>

#include <initializer_list>
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

Bytes bytesOfInts(std::initializer_list<int> values)
{
    Bytes bytes;
    for (int value : values) {
        const auto* first = reinterpret_cast<const unsigned char*>(&value);
        bytes.insert(bytes.end(), first, first + sizeof value);
    }
    return bytes;
}

template <class T>
T readBack(VornBufferStream& stream)
{
    T value{};
    stream >> value;
    return value;
}

}  // namespace

TEST(VornBufferStreamTest, ScalarsComeBackInTheirOwnSizesBehindAHeaderWithThePayloadSize)
{
    VornBufferStream stream;
    EXPECT_EQ(blockOf(stream), Bytes(8, 0));
    stream << 0x01020304;
    EXPECT_EQ(blockOf(stream), (Bytes{4, 0, 0, 0, 0, 0, 0, 0, 4, 3, 2, 1}));
    stream << 'x' << static_cast<short>(-300) << -2.25;
    EXPECT_EQ(stream.size(), 4u + 1 + 2 + 8);
    EXPECT_EQ(readBack<int>(stream), 0x01020304);
    EXPECT_EQ(readBack<char>(stream), 'x');
    EXPECT_EQ(readBack<short>(stream), -300);
    EXPECT_EQ(readBack<double>(stream), -2.25);
    EXPECT_EQ(stream.size(), 0u);
}

// A stream reads texts with 2-byte lengths, as its peers send them, but
// writes them with 8-byte lengths, narrow text up to its first NUL. Zero and
// negative lengths read leave the text as it was.
TEST(VornBufferStreamTest, TextIsWrittenWithAnEightByteLengthAndReadWithATwoByteOne)
{
    VornBufferStream written;
    written << "abc" << static_cast<const char*>(nullptr) << std::string("a\0b", 3) << std::wstring(L"a\0b", 3);
    const Bytes expected = {3, 0, 0, 0, 0, 0, 0, 0, 'a', 'b', 'c',  //
                            0, 0, 0, 0, 0, 0, 0, 0,                  //
                            1, 0, 0, 0, 0, 0, 0, 0, 'a',             //
                            3, 0, 0, 0, 0, 0, 0, 0, 'a', 0, 0, 0, 0, 0, 0, 0, 'b', 0, 0, 0};
    EXPECT_EQ(payloadOf(written), expected);

    Bytes block = {0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 'a', 'b', 'c', 2, 0, 'x', 'y', 1, 0, 'w', 0, 0, 0,
                   0, 0,  0, 0, 0xff, 0xff, 'z'};
    VornBufferStream received(block.data(), static_cast<unsigned int>(block.size()));
    std::string text, keptText = "kept";
    std::wstring wide, keptWide = L"kept";
    char* raw = nullptr;
    char* keptRaw = nullptr;
    received >> text >> raw >> wide >> keptText >> keptWide >> keptRaw;
    EXPECT_EQ(text, "abc");
    ASSERT_NE(raw, nullptr);
    EXPECT_STREQ(raw, "xy");
    delete[] raw;
    EXPECT_EQ(wide, L"w");
    EXPECT_EQ(keptText, "kept");
    EXPECT_EQ(keptWide, L"kept");
    EXPECT_EQ(keptRaw, nullptr);
    EXPECT_EQ(received.size(), 1u);
}

TEST(VornBufferStreamTest, PeekLeavesTheBytesReadTakesThemAndBothHandOverWhatThereIs)
{
    VornBufferStream stream;
    stream << 1 << static_cast<short>(0x0102);
    int peeked = 0;
    EXPECT_EQ(stream.peek(&peeked, sizeof peeked, 1), 4u);
    EXPECT_EQ(readBack<int>(stream), peeked);
    char target[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    EXPECT_EQ(stream.read(target, 4, 2), 2u);
    EXPECT_EQ(Bytes(target, target + 3), (Bytes{2, 1, 9}));
    int value = 42;
    stream >> value;
    EXPECT_EQ(value, 42);

    stream << 1;
    stream.reset();
    stream << 3;
    EXPECT_EQ(readBack<int>(stream), 3);
    EXPECT_EQ(stream.size(), 0u);
}

TEST(VornBufferStreamTest, FirstWritesNearAStepStillLeaveRoomForTheHeader)
{
    for (unsigned long step : {512UL, 3UL}) {
        for (unsigned long size : {1UL, 504UL, 505UL, 1000UL}) {
            VornBufferStream stream(step);
            const std::vector<char> written(size, 'z');
            EXPECT_EQ(stream.write(written.data(), 1, size), size);
            std::vector<char> read(size);
            EXPECT_EQ(stream.read(read.data(), 1, size), size);
            EXPECT_EQ(read, written) << step << " " << size;
        }
    }
}

TEST(VornBufferStreamTest, ReceivedBlocksAndCopiesHoldTheirOwnPayload)
{
    VornBufferStream source;
    source << 5 << "text" << 2.5;
    VornBufferStream received(source.buffer(), static_cast<unsigned int>(source.size() + 8));
    VornBufferStream copy(source);
    VornBufferStream assigned;
    assigned << 99;
    assigned = source;
    for (auto* stream : {&received, &copy, &assigned}) {
        EXPECT_EQ(payloadOf(*stream), payloadOf(source));
        EXPECT_EQ(readBack<int>(*stream), 5);
    }
    EXPECT_EQ(source.size(), 4u + 8 + 4 + 8);
    char tooShort[3] = {1, 2, 3};
    EXPECT_EQ(VornBufferStream(tooShort, 3).size(), 0u);
}

// Reads leave the unread rest where it stands; a copy, buffer() and a write
// that needs the room the reads freed see it at byte 8, as if every read had
// moved it down.
TEST(VornBufferStreamTest, TheUnreadRestStandsAtByteEightWheneverItIsSeen)
{
    VornBufferStream stream(16);
    stream << 1 << 2 << 3 << 4;
    EXPECT_EQ(readBack<int>(stream), 1);
    VornBufferStream copy(stream);
    VornBufferStream assigned;
    assigned = stream;
    EXPECT_EQ(payloadOf(copy), bytesOfInts({2, 3, 4}));
    EXPECT_EQ(payloadOf(assigned), bytesOfInts({2, 3, 4}));

    EXPECT_EQ(readBack<int>(stream), 2);
    stream << 5 << 6 << 7;
    EXPECT_EQ(readBack<int>(stream), 3);
    Bytes block = {16, 0, 0, 0, 0, 0, 0, 0};
    const Bytes payload = bytesOfInts({4, 5, 6, 7});
    block.insert(block.end(), payload.begin(), payload.end());
    EXPECT_EQ(blockOf(stream), block);
    for (int expected : {4, 5, 6, 7}) {
        EXPECT_EQ(readBack<int>(stream), expected);
    }
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
    int mismatches = 0;
    for (int expected = 0; expected < count;) {
        int value = -1;
        if (stream.read(&value, sizeof value, 1) == sizeof value) {
            mismatches += value != expected++;
        }
    }
    writer.join();
    EXPECT_EQ(mismatches, 0);
}
