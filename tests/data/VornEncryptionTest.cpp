#include <vsupt/VornEncryption.h>
#include <vsupt/VornInvalidEncryptionException.h>

#include <gtest/gtest.h>

#include "support/ThrownText.h"

#include <stdexcept>
#include <string>

using namespace VornSupport;

namespace {

std::string fromHex(const std::string& hex)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

// One block through the cipher, with the schedule of the object as it stands.
std::string encipher(VornEncryption& cipher, const std::string& eightBytes, bool decrypt = false)
{
    SBlock block(0, 0);
    cipher.bytesToBlock(reinterpret_cast<const unsigned char*>(eightBytes.data()), block);
    if (decrypt) {
        cipher.decryptInternal(block);
    } else {
        cipher.encryptInternal(block);
    }
    std::string result(8, '\0');
    cipher.blockToBytes(block, reinterpret_cast<unsigned char*>(&result[0]) + 8);
    return result;
}

// A cipher with the schedule of key set up by hand.
VornEncryption scheduled(const std::string& key)
{
    VornEncryption cipher(VornEncryption::StrengthLow);
    cipher.initialize(key, static_cast<unsigned int>(key.size()), VornEncryption::ModeECB, SBlock(0, 0));
    return cipher;
}

std::string encrypted(VornEncryption::Strength strength, const std::string& key, const std::string& input,
                      std::string output = std::string())
{
    VornEncryption cipher(strength);
    cipher.encryptData(key, input, output);
    return output;
}

const std::string kKey = "secret key";
const std::string kPlain = "0123456789abcdefFEDCBA9876543210";
const auto kLow = VornEncryption::StrengthLow;
const auto kHigh = VornEncryption::StrengthHigh;

}  // namespace

TEST(VornEncryptionTest, PublishedTestVectorsHold)
{
    const char* vectors[][3] = {
        {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
        {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
        {"3000000000000000", "1000000000000001", "7D856F9A613063F2"},
        {"FEDCBA9876543210", "0123456789ABCDEF", "0ACEAB0FC6A0A28D"},
    };
    for (const auto& vector : vectors) {
        VornEncryption cipher = scheduled(fromHex(vector[0]));
        EXPECT_EQ(encipher(cipher, fromHex(vector[1])), fromHex(vector[2])) << vector[0];
        EXPECT_EQ(encipher(cipher, fromHex(vector[2]), true), fromHex(vector[1])) << vector[0];
    }
}

// Each block is written one block ahead of its place, so the first falls off
// the front, the last place keeps what the output held there (zeros when it
// was short) and a last, partial block is filled with the NUL and zeros.
TEST(VornEncryptionTest, OutputStandsOneBlockAheadOfTheString)
{
    VornEncryption cipher = scheduled(kKey);
    const std::string input = kPlain.substr(0, 16);
    EXPECT_EQ(encrypted(kLow, kKey, input), encipher(cipher, input.substr(8, 8)) + std::string(8, '\0'));
    std::string chained = encipher(cipher, input.substr(0, 8));
    for (int i = 0; i < 8; ++i) {
        chained[i] = static_cast<char>(chained[i] ^ input[8 + i]);
    }
    EXPECT_EQ(encrypted(kHigh, kKey, input), encipher(cipher, chained) + std::string(8, '\0'));
    const std::string nine = kPlain.substr(0, 9);
    EXPECT_EQ(encrypted(kLow, kKey, nine), encipher(cipher, nine.substr(8, 1) + std::string(7, '\0')) + '\0');

    const std::string before(24, 'x');
    EXPECT_EQ(encrypted(kHigh, kKey, input, before).substr(8), std::string(16, 'x'));
    EXPECT_EQ(encrypted(kLow, kKey, "12345678", before), before);
    std::string inPlace = kPlain;
    VornEncryption().encryptData(kKey, inPlace, inPlace);
    EXPECT_EQ(inPlace, encrypted(kHigh, kKey, kPlain, kPlain));
}

TEST(VornEncryptionTest, KeysThatFillTheFirst72BytesAlikeGiveOneSchedule)
{
    std::string repeated;
    while (repeated.size() < 80) {
        repeated += "ab";
    }
    EXPECT_EQ(encrypted(kHigh, "ab", kPlain), encrypted(kHigh, repeated, kPlain));
    EXPECT_EQ(encrypted(kLow, std::string(72, 'k'), kPlain), encrypted(kLow, std::string(72, 'k') + "tail", kPlain));
}

TEST(VornEncryptionTest, EmptyKeysUnknownModesAndKeyLengthsBeyondTheKeyAreRefusedAndEmptyInputWritesNothing)
{
    VornEncryption cipher;
    std::string empty, output, error;
    EXPECT_TRUE(cipher.encryptDataImpl("", empty, output, error));
    EXPECT_EQ(error, "");
    EXPECT_FALSE(cipher.decryptDataImpl("", empty, output, error));
    EXPECT_EQ(error, "The key passed is empty");
    std::string input = "data";
    EXPECT_EQ(textThrown<VornInvalidEncryptionException>([&] { cipher.encryptData("", input, output); }),
              "VornInvalidEncryptionException - The key passed is empty");
    EXPECT_THROW(cipher.decryptData("", input, output), VornInvalidEncryptionException);
    output = "kept";
    EXPECT_TRUE(cipher.encryptDataImpl(kKey, empty, output, error));
    EXPECT_EQ(output, "kept");
    EXPECT_TRUE(cipher.decryptDataImpl(kKey, empty, output, error));
    EXPECT_EQ(output, "");

    EXPECT_EQ(textThrown<VornInvalidEncryptionException>([&] { cipher.initialize(kKey, 3, static_cast<VornEncryption::tMode>(2), SBlock(0, 0)); }),
              "VornInvalidEncryptionException - The mode is not initialized properly");
    EXPECT_THROW(cipher.initialize("abc", 4, VornEncryption::ModeECB, SBlock(0, 0)), std::out_of_range);
    EXPECT_THROW(cipher.initialize("abc", 0, VornEncryption::ModeECB, SBlock(0, 0)), std::out_of_range);
}

// Decryption writes one block ahead as well, so it does not give back the
// input. A schedule made from the first byte of the key alone, while the
// object records the whole key, shows that only a rebuilt schedule is used.
TEST(VornEncryptionTest, DecryptionIsOneBlockAheadAndReusesTheScheduleUntilStrengthOrKeyChanges)
{
    std::string cipherText = encrypted(kLow, kKey, kPlain);
    std::string expected, reused, copied, rebuilt;
    VornEncryption(kLow).decryptData(kKey, cipherText, expected);
    VornEncryption byHand = scheduled(kKey);
    EXPECT_EQ(expected, kPlain.substr(16) + encipher(byHand, std::string(8, '\0'), true) + std::string(8, '\0'));
    VornEncryption cipher(kLow);
    cipher.initialize(kKey, 1, VornEncryption::ModeECB, SBlock(0, 0));
    cipher.decryptData(kKey, cipherText, reused);
    EXPECT_NE(reused, expected);
    VornEncryption(cipher).decryptData(kKey, cipherText, copied);
    EXPECT_EQ(copied, expected);
    cipher.setStrength(kLow);
    cipher.decryptData(kKey, cipherText, rebuilt);
    EXPECT_EQ(rebuilt, expected);
}
