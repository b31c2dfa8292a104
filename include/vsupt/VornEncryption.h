/// @class VornSupport::VornEncryption
/// A Blowfish cipher object for strings of raw bytes, in ECB or CBC mode.
///
/// The key comes with every call: encryption sets up the key schedule each
/// time, decryption only when the key differs from the last one. Nothing is
/// added to the data: no header, no padding bytes, no encoding, and no
/// random numbers, so equal key, input and prior output always give the same
/// result. The data format is that of the whole blocks written one block
/// ahead of the string: block i of the result, counted from 0, lands on
/// positions 8(i-1) to 8i-1 of the output, so the first block never shows
/// and the output keeps its own bytes from 8(k-1) on, k being the number of
/// blocks of the input. The output is never made shorter than it was.
///
/// The strength decides the mode: StrengthLow is ECB, StrengthHigh (the
/// default) CBC, with a chain that starts at (0, 0) on every call.
///
/// An object rebuilds its key schedule without a lock and belongs to one
/// thread at a time; threads use objects of their own.
#ifndef VSUPT_VORNENCRYPTION_H
#define VSUPT_VORNENCRYPTION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/SBlock.h>

#include <cstdint>
#include <string>

namespace VornSupport {

class VSUPT_API VornEncryption {
public:
    /// Key strength.
    enum Strength : std::int32_t {
        StrengthLow = 0,
        StrengthHigh = 1
    };

    /// Block chaining mode.
    enum tMode : std::int32_t {
        ModeECB = 0,
        ModeCBC = 1
    };

    VornEncryption();
    /// A cipher of the given strength.
    explicit VornEncryption(const Strength& strength);
    /// Copies take key, mode, chain and schedule, and set up the schedule
    /// again at their first decryption.
    VornEncryption(VornEncryption& other);
    /// Takes key, mode, chain and schedule from other, as the copy constructor does.
    VornEncryption& operator=(VornEncryption& other);
    virtual ~VornEncryption();

    /// Throw VornInvalidEncryptionException with the text the Impl form gives.
    virtual void encryptData(const std::string& key, const std::string& input, std::string& output);
    /// Encrypts input into output with key; false and a text on failure.
    virtual bool encryptDataImpl(const std::string& key, const std::string& input, std::string& output,
                                 std::string& error);
    /// Decrypts input into output with key.
    virtual void decryptData(const std::string& key, std::string& input, std::string& output);
    /// Decrypts input into output with key; false and a text on failure.
    virtual bool decryptDataImpl(const std::string& key, std::string& input, std::string& output,
                                 std::string& error);
    /// The key strength.
    virtual Strength getStrength();
    /// Also sets the chain back to (0, 0). A value other than the two
    /// strengths changes nothing else.
    virtual void setStrength(const Strength& strength);

    /// Marks the key schedule as set up, or as due to be set up again.
    void setInit(const bool& init);
    /// Sets up the key schedule from the first keyLength bytes of key,
    /// repeated. Throws VornInvalidEncryptionException for a mode above
    /// ModeCBC, and std::out_of_range when keyLength is 0 or beyond the key.
    void initialize(const std::string& key, const unsigned int& keyLength, const tMode& mode, const SBlock& chain);

    /// Blowfish on one block with the schedule as it stands.
    void encryptInternal(SBlock& block);
    /// Blowfish decryption of one block with the schedule as it stands.
    void decryptInternal(SBlock& block);
    /// 8 bytes, big-endian, left half first.
    void bytesToBlock(const unsigned char* bytes, SBlock& block);
    /// Writes the 8 bytes directly in front of end.
    void blockToBytes(const SBlock& block, unsigned char* end);
    /// The length of buffer rounded up to whole blocks.
    int padInputBuf(std::string buffer);

    /// The initial P-array of Blowfish.
    static const std::uint32_t arrwPBoxInit[18];
    /// The initial S-boxes of Blowfish, four of 256 words.
    static const std::uint32_t arrwSBoxInit[1024];

private:
    void copyValues(VornEncryption& other);

    Strength m_strength;
    bool m_bInit;
    std::int32_t m_blockSize;
    std::int32_t m_keyBufferLength;
    std::string m_key;
    tMode m_mode;
    SBlock m_chain;
    std::uint32_t m_arrwPBox[18];
    std::uint32_t m_arrwSBox[4][256];
};

}  // namespace VornSupport

#endif
