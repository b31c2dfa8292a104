// Blowfish throughput on 1 MiB in ECB and CBC against OpenSSL's Blowfish,
// and the key schedule alone against BF_set_key. The library sets up its
// key schedule on every encryption, so its figures include one schedule per
// megabyte, while OpenSSL's key is set once outside the loop. OpenSSL is
// measured only when the build found it.
#include "BenchRatio.h"

#include <vsupt/VornEncryption.h>

#ifdef VSUPT_BENCH_HAVE_OPENSSL
// The low-level Blowfish calls are deprecated but are the peer wanted here.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/blowfish.h>
#endif

#include <string>

namespace {

using VornSupport::SBlock;
using VornSupport::VornEncryption;

const vsupt_bench::RatioRegistration ratios{
    // At least 0.9x the peer's throughput is at most 1/0.9 of its time.
    {"Blowfish ECB 1 MiB with our key schedule (throughput >= 0.9x)", "BM_VornEncryption_Ecb1MiB",
     "BM_OpenSSL_Ecb1MiB", 1.0 / 0.9},
    {"Blowfish CBC 1 MiB with our key schedule (throughput >= 0.9x)", "BM_VornEncryption_Cbc1MiB",
     "BM_OpenSSL_Cbc1MiB", 1.0 / 0.9},
    {"key schedule alone", "BM_VornEncryption_KeySchedule", "BM_OpenSSL_SetKey", 0},
};

const std::string kKey = "sixteen byte key";
const std::size_t kMiB = 1 << 20;

std::string plainText()
{
    std::string text(kMiB, '\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char>(i * 131 + 7);
    }
    return text;
}

void encryptMiB(benchmark::State& state, VornEncryption::Strength strength)
{
    VornEncryption cipher(strength);
    const std::string input = plainText();
    std::string output(input.size(), '\0');
    for (auto _ : state) {
        cipher.encryptData(kKey, input, output);
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * input.size()));
}

void BM_VornEncryption_Ecb1MiB(benchmark::State& state)
{
    encryptMiB(state, VornEncryption::StrengthLow);
}
BENCHMARK(BM_VornEncryption_Ecb1MiB);

void BM_VornEncryption_Cbc1MiB(benchmark::State& state)
{
    encryptMiB(state, VornEncryption::StrengthHigh);
}
BENCHMARK(BM_VornEncryption_Cbc1MiB);

void BM_VornEncryption_KeySchedule(benchmark::State& state)
{
    VornEncryption cipher;
    for (auto _ : state) {
        cipher.initialize(kKey, static_cast<unsigned int>(kKey.size()), VornEncryption::ModeECB, SBlock(0, 0));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_VornEncryption_KeySchedule);

#ifdef VSUPT_BENCH_HAVE_OPENSSL

BF_KEY scheduledKey()
{
    BF_KEY key;
    BF_set_key(&key, static_cast<int>(kKey.size()), reinterpret_cast<const unsigned char*>(kKey.data()));
    return key;
}

void BM_OpenSSL_Ecb1MiB(benchmark::State& state)
{
    const BF_KEY key = scheduledKey();
    const std::string input = plainText();
    std::string output(input.size(), '\0');
    const auto* in = reinterpret_cast<const unsigned char*>(input.data());
    auto* out = reinterpret_cast<unsigned char*>(&output[0]);
    for (auto _ : state) {
        for (std::size_t offset = 0; offset < input.size(); offset += 8) {
            BF_ecb_encrypt(in + offset, out + offset, &key, BF_ENCRYPT);
        }
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * input.size()));
}
BENCHMARK(BM_OpenSSL_Ecb1MiB);

void BM_OpenSSL_Cbc1MiB(benchmark::State& state)
{
    const BF_KEY key = scheduledKey();
    const std::string input = plainText();
    std::string output(input.size(), '\0');
    for (auto _ : state) {
        unsigned char chain[8] = {};
        BF_cbc_encrypt(reinterpret_cast<const unsigned char*>(input.data()),
                       reinterpret_cast<unsigned char*>(&output[0]), static_cast<long>(input.size()), &key, chain,
                       BF_ENCRYPT);
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * input.size()));
}
BENCHMARK(BM_OpenSSL_Cbc1MiB);

void BM_OpenSSL_SetKey(benchmark::State& state)
{
    BF_KEY key;
    for (auto _ : state) {
        BF_set_key(&key, static_cast<int>(kKey.size()), reinterpret_cast<const unsigned char*>(kKey.data()));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_OpenSSL_SetKey);

#endif

}  // namespace
