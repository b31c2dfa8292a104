#include <vsupt/VornEncryption.h>
#include <vsupt/VornInvalidEncryptionException.h>

#include <gtest/gtest.h>

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

const auto* bytesOf(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

// One block through the cipher, with the schedule of the object as it stands.
std::string encipher(VornEncryption& cipher, const std::string& eightBytes, bool decrypt = false)
{
    SBlock block(0, 0);
    cipher.bytesToBlock(bytesOf(eightBytes), block);
    if (decrypt) {
        cipher.decryptInternal(block);
    } else {
        cipher.encryptInternal(block);
    }
    std::string result(8, '\0');
    cipher.blockToBytes(block, reinterpret_cast<unsigned char*>(&result[0]) + 8);
    return result;
}

std::string exclusiveOr(std::string a, const std::string& b)
{
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] = static_cast<char>(a[i] ^ b[i]);
    }
    return a;
}

// A cipher with the schedule of key set up by hand.
VornEncryption scheduled(const std::string& key, VornEncryption::Strength strength = VornEncryption::StrengthLow)
{
    VornEncryption cipher(strength);
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

}  // namespace

TEST(VornEncryptionTest, PublishedTestVectorsHold)
{
    const char* vectors[][3] = {
        {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
        {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
        {"3000000000000000", "1000000000000001", "7D856F9A613063F2"},
        {"1111111111111111", "1111111111111111", "2466DD878B963C9D"},
        {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
        {"1111111111111111", "0123456789ABCDEF", "7D0CC630AFDA1EC7"},
        {"FEDCBA9876543210", "0123456789ABCDEF", "0ACEAB0FC6A0A28D"},
    };
    for (const auto& vector : vectors) {
        VornEncryption cipher = scheduled(fromHex(vector[0]));
        EXPECT_EQ(encipher(cipher, fromHex(vector[1])), fromHex(vector[2])) << vector[0];
        EXPECT_EQ(encipher(cipher, fromHex(vector[2]), true), fromHex(vector[1])) << vector[0];
    }
}

TEST(VornEncryptionTest, OutputStandsOneBlockAheadOfTheString)
{
    VornEncryption cipher = scheduled(kKey);
    const std::string input = kPlain.substr(0, 16);
    const std::string ecb = encrypted(VornEncryption::StrengthLow, kKey, input);
    EXPECT_EQ(ecb, encipher(cipher, input.substr(8, 8)) + std::string(8, '\0'));

    const std::string c0 = encipher(cipher, input.substr(0, 8));
    const std::string cbc = encrypted(VornEncryption::StrengthHigh, kKey, input);
    EXPECT_EQ(cbc, encipher(cipher, exclusiveOr(input.substr(8, 8), c0)) + std::string(8, '\0'));

    // A last, partial block is filled with the terminating NUL and zeros.
    const std::string nine = kPlain.substr(0, 9);
    EXPECT_EQ(encrypted(VornEncryption::StrengthLow, kKey, nine),
              encipher(cipher, nine.substr(8, 1) + std::string(7, '\0')) + std::string(1, '\0'));
}

TEST(VornEncryptionTest, BytesBeyondTheBlocksKeepWhatTheOutputHeld)
{
    const std::string before(24, 'x');
    const std::string output = encrypted(VornEncryption::StrengthHigh, kKey, kPlain.substr(0, 16), before);
    ASSERT_EQ(output.size(), 24u);
    EXPECT_EQ(output.substr(8), std::string(16, 'x'));
    EXPECT_EQ(encrypted(VornEncryption::StrengthLow, kKey, "12345678", before), before);

    std::string inPlace = kPlain;
    VornEncryption cipher;
    cipher.encryptData(kKey, inPlace, inPlace);
    EXPECT_EQ(inPlace, encrypted(VornEncryption::StrengthHigh, kKey, kPlain, kPlain));
}

TEST(VornEncryptionTest, KeysThatFillTheFirst72BytesAlikeGiveOneSchedule)
{
    std::string repeated;
    while (repeated.size() < 80) {
        repeated += "ab";
    }
    EXPECT_EQ(encrypted(VornEncryption::StrengthHigh, "ab", kPlain), encrypted(VornEncryption::StrengthHigh, repeated, kPlain));
    const std::string long72(72, 'k');
    EXPECT_EQ(encrypted(VornEncryption::StrengthLow, long72, kPlain),
              encrypted(VornEncryption::StrengthLow, long72 + "tail", kPlain));
}

TEST(VornEncryptionTest, DecryptingTheOutputDoesNotRestoreTheInput)
{
    const std::string input = kPlain.substr(0, 24);
    std::string cipherText = encrypted(VornEncryption::StrengthLow, kKey, input);
    VornEncryption decryptor(VornEncryption::StrengthLow);
    std::string plain;
    decryptor.decryptData(kKey, cipherText, plain);
    VornEncryption cipher = scheduled(kKey);
    EXPECT_EQ(plain, input.substr(16, 8) + encipher(cipher, std::string(8, '\0'), true) + std::string(8, '\0'));
}

TEST(VornEncryptionTest, EmptyKeyIsRefusedUnlessThereIsNothingToEncryptAndEmptyInputWritesNothing)
{
    VornEncryption cipher;
    std::string empty;
    std::string output;
    std::string error;
    EXPECT_TRUE(cipher.encryptDataImpl("", empty, output, error));
    EXPECT_EQ(error, "");
    EXPECT_FALSE(cipher.decryptDataImpl("", empty, output, error));
    EXPECT_EQ(error, "The key passed is empty");
    std::string input = "data";
    try {
        cipher.encryptData("", input, output);
        ADD_FAILURE() << "nothing thrown";
    } catch (const VornInvalidEncryptionException& e) {
        EXPECT_EQ(e.getText(), "VornInvalidEncryptionException - The key passed is empty");
    }
    EXPECT_THROW(cipher.decryptData("", input, output), VornInvalidEncryptionException);

    output = "kept";
    EXPECT_TRUE(cipher.encryptDataImpl(kKey, empty, output, error));
    EXPECT_EQ(output, "kept");
    EXPECT_TRUE(cipher.decryptDataImpl(kKey, empty, output, error));
    EXPECT_EQ(output, "");
}

TEST(VornEncryptionTest, InitializeRefusesUnknownModesAndKeyLengthsBeyondTheKey)
{
    VornEncryption cipher;
    try {
        cipher.initialize(kKey, 3, static_cast<VornEncryption::tMode>(2), SBlock(0, 0));
        ADD_FAILURE() << "nothing thrown";
    } catch (const VornInvalidEncryptionException& e) {
        EXPECT_EQ(e.getText(), "VornInvalidEncryptionException - The mode is not initialized properly");
    }
    EXPECT_THROW(cipher.initialize("abc", 4, VornEncryption::ModeECB, SBlock(0, 0)), std::out_of_range);
    EXPECT_THROW(cipher.initialize("abc", 0, VornEncryption::ModeECB, SBlock(0, 0)), std::out_of_range);
}

// A schedule made from the first byte of the key alone, while the object
// records the whole key: only a rebuilt schedule decrypts correctly.
TEST(VornEncryptionTest, DecryptionReusesTheScheduleUntilStrengthOrKeyChanges)
{
    std::string cipherText = encrypted(VornEncryption::StrengthLow, kKey, kPlain);
    std::string expected;
    VornEncryption fresh(VornEncryption::StrengthLow);
    fresh.decryptData(kKey, cipherText, expected);

    VornEncryption cipher(VornEncryption::StrengthLow);
    cipher.initialize(kKey, 1, VornEncryption::ModeECB, SBlock(0, 0));
    std::string reused;
    cipher.decryptData(kKey, cipherText, reused);
    EXPECT_NE(reused, expected);

    VornEncryption copy(cipher);
    EXPECT_EQ(copy.getStrength(), VornEncryption::StrengthLow);
    std::string copied;
    copy.decryptData(kKey, cipherText, copied);
    EXPECT_EQ(copied, expected);

    cipher.setStrength(VornEncryption::StrengthLow);
    std::string rebuilt;
    cipher.decryptData(kKey, cipherText, rebuilt);
    EXPECT_EQ(rebuilt, expected);
}
