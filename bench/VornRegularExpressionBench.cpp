// The regular expression dialect against std::regex_search (ECMAScript) and
// POSIX regexec (extended).
//
// On 1 MiB texts and patterns where all three find the same match:
//
//   literal     "lazy cat" behind 1 MiB of words with many near misses
//   number      [0-9]+\.[0-9]+ over a number of 1 MiB, from its start
//   greedy      a.*c over an `a`, letters, a `c` half way and more letters,
//               so that the greedy run gives back half a MiB
//   start over  ab[cd]e behind 1 MiB of "abcf", each a false start
//
// Every engine reports the position and the length of the match. The
// backtracking std::regex recurses once per repeated character, so its
// searches run on a thread with a 1 GiB stack; making that thread costs
// microseconds against searches of milliseconds.
//
// Then the fixed cost of a find: [0-9]+\.[0-9]+ from the index where a
// number stands in a short line, and a pattern that fails at its first
// token as it grows. Then how find scales with the text its walk covers,
// and searches that cannot succeed, over n and 10n characters.
#include "BenchRatio.h"

// g++ 12 with the sanitizers warns about std::regex's own compiler, whose
// std::function members it cannot follow; the peer's code is not ours.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <vsupt/VornRegularExpression.h>

#include <pthread.h>
#include <regex.h>

#include <cstddef>
#include <functional>
#include <map>
#include <regex>
#include <string>
#include <utility>

namespace {

using VornSupport::VornRegularExpression;

const vsupt_bench::RatioRegistration ratios{
    {"literal vs std::regex_search", "BM_VornFind_Literal", "BM_StdRegexSearch_Literal", 0.2},
    {"literal vs regexec", "BM_VornFind_Literal", "BM_PosixRegexec_Literal", 1.0},
    {"number vs std::regex_search", "BM_VornFind_Number", "BM_StdRegexSearch_Number", 0.2},
    {"number vs regexec", "BM_VornFind_Number", "BM_PosixRegexec_Number", 1.0},
    {"greedy vs std::regex_search", "BM_VornFind_Greedy", "BM_StdRegexSearch_Greedy", 0.2},
    {"greedy vs regexec", "BM_VornFind_Greedy", "BM_PosixRegexec_Greedy", 1.0},
    {"start over vs std::regex_search", "BM_VornFind_StartOver", "BM_StdRegexSearch_StartOver", 0.2},
    {"start over vs regexec", "BM_VornFind_StartOver", "BM_PosixRegexec_StartOver", 1.0},
    {"number at its index vs std::regex_search", "BM_VornFind_NumberAtIndex", "BM_StdRegexSearch_NumberAtIndex", 0},
    {"number at its index vs regexec", "BM_VornFind_NumberAtIndex", "BM_PosixRegexec_NumberAtIndex", 1.0},
    {"failing .*c, n to 10n", "BM_VornFail_DotStarC/1048570", "BM_VornFail_DotStarC/104857", 12},
    {"failing a.*b.*c, n to 10n", "BM_VornFail_ABC/1048570", "BM_VornFail_ABC/104857", 12},
    {"failing [0-9]+x, n to 10n", "BM_VornFail_DigitsX/1048570", "BM_VornFail_DigitsX/104857", 12},
    {"failing .*.*.*x, n to 10n", "BM_VornFail_ThreeDotStarsX/1048570", "BM_VornFail_ThreeDotStarsX/104857", 12},
    {"failing a*a*a*a*b, n to 10n", "BM_VornFail_FourAStarsB/1048570", "BM_VornFail_FourAStarsB/104857", 12},
    {"failing .*c vs a scan", "BM_VornFail_DotStarC/1048570", "BM_ScanPeer_DotStarC/1048570", 0},
    {"failing a.*b.*c vs a scan", "BM_VornFail_ABC/1048570", "BM_ScanPeer_ABC/1048570", 0},
    {"failing [0-9]+x vs a scan", "BM_VornFail_DigitsX/1048570", "BM_ScanPeer_DigitsX/1048570", 0},
    {"failing .*.*.*x vs a scan", "BM_VornFail_ThreeDotStarsX/1048570", "BM_ScanPeer_ThreeDotStarsX/1048570", 0},
    {"failing a*a*a*a*b vs a scan", "BM_VornFail_FourAStarsB/1048570", "BM_ScanPeer_FourAStarsB/1048570", 0},
    {"failing .*c vs regexec", "BM_VornFail_DotStarC/1048570", "BM_PosixRegexecFail_DotStarC/1048570", 1.0},
    {"failing .*.*.*x vs regexec", "BM_VornFail_ThreeDotStarsX/1048570", "BM_PosixRegexecFail_ThreeDotStarsX/1048570", 1.0},
    {"failing a*a*a*a*b vs regexec", "BM_VornFail_FourAStarsB/1048570", "BM_PosixRegexecFail_FourAStarsB/1048570", 1.0},
};

constexpr std::size_t kTextSize = std::size_t(1) << 20;

// Text of the given size made of copies of unit, followed by tail.
std::string repeated(const std::string& unit, const std::string& tail, std::size_t size = kTextSize)
{
    std::string text;
    text.reserve(size);
    while (text.size() + unit.size() + tail.size() <= size) {
        text += unit;
    }
    text.append(size - text.size() - tail.size(), unit[0]);
    return text + tail;
}

// A pattern, its text, and the match every engine must report.
struct Case {
    const char* pattern;
    std::string text;
    std::size_t position;
    std::size_t length;
};

Case endingIn(const char* pattern, const std::string& text, std::size_t length)
{
    return {pattern, text, text.size() - length, length};
}

Case wholeOf(const char* pattern, const std::string& text)
{
    return {pattern, text, 0, text.size()};
}

const Case& literalCase()
{
    static const Case c =
        endingIn("lazy cat", repeated("the quick brown fox jumps over the lazy dog ", "lazy cat"), 8);
    return c;
}

const Case& numberCase()
{
    static const Case c = wholeOf("[0-9]+\\.[0-9]+", repeated("3141592653", ".", kTextSize / 2) +
                                                         repeated("2718281828", "", kTextSize / 2));
    return c;
}

const Case& greedyCase()
{
    static const std::string half = "a" + repeated("the lazy brown fox jumps over the old dog ", "c", kTextSize / 2);
    static const Case c{"a.*c", half + repeated("the lazy brown fox jumps over the old dog ", "", kTextSize / 2),
                        0, half.size()};
    return c;
}

const Case& startOverCase()
{
    static const Case c = endingIn("ab[cd]e", repeated("abcf", "abde"), 4);
    return c;
}

bool isExpected(const Case& c, std::size_t position, std::size_t length)
{
    return position == c.position && length == c.length;
}

void runVorn(benchmark::State& state, const Case& c)
{
    VornRegularExpression<std::string> expression;
    expression.setPattern(c.pattern);
    unsigned long length = 0;
    const unsigned long position = expression.find(c.text, length, 0);
    if (!isExpected(c, position, length)) {
        state.SkipWithError("wrong match");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(expression.find(c.text, length, 0));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * c.text.size()));
}

void* runFunction(void* function)
{
    (*static_cast<std::function<void()>*>(function))();
    return nullptr;
}

void onLargeStack(std::function<void()> function)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t(1) << 30);
    pthread_t thread;
    if (pthread_create(&thread, &attributes, runFunction, &function) == 0) {
        pthread_join(thread, nullptr);
    }
    pthread_attr_destroy(&attributes);
}

void runStdRegex(benchmark::State& state, const Case& c)
{
    const std::regex expression(c.pattern);
    std::smatch match;
    bool found = false;
    onLargeStack([&] { found = std::regex_search(c.text, match, expression); });
    if (!found || !isExpected(c, match.position(0), match.length(0))) {
        state.SkipWithError("wrong match");
        return;
    }
    for (auto _ : state) {
        onLargeStack([&] { benchmark::DoNotOptimize(std::regex_search(c.text, match, expression)); });
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * c.text.size()));
}

void runRegexec(benchmark::State& state, const Case& c)
{
    regex_t expression;
    if (regcomp(&expression, c.pattern, REG_EXTENDED) != 0) {
        state.SkipWithError("regcomp failed");
        return;
    }
    regmatch_t match[1];
    if (regexec(&expression, c.text.c_str(), 1, match, 0) != 0 ||
        !isExpected(c, match[0].rm_so, match[0].rm_eo - match[0].rm_so)) {
        state.SkipWithError("wrong match");
    } else {
        for (auto _ : state) {
            benchmark::DoNotOptimize(regexec(&expression, c.text.c_str(), 1, match, 0));
        }
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * c.text.size()));
    }
    regfree(&expression);
}

#define VSUPT_REGEX_BENCHMARKS(Name, caseFunction)                                                  \
    void BM_VornFind_##Name(benchmark::State& state) { runVorn(state, caseFunction()); }            \
    void BM_StdRegexSearch_##Name(benchmark::State& state) { runStdRegex(state, caseFunction()); }  \
    void BM_PosixRegexec_##Name(benchmark::State& state) { runRegexec(state, caseFunction()); }     \
    BENCHMARK(BM_VornFind_##Name)->Unit(benchmark::kMillisecond);                                   \
    BENCHMARK(BM_StdRegexSearch_##Name)->Unit(benchmark::kMillisecond);                             \
    BENCHMARK(BM_PosixRegexec_##Name)->Unit(benchmark::kMillisecond)

VSUPT_REGEX_BENCHMARKS(Literal, literalCase);
VSUPT_REGEX_BENCHMARKS(Number, numberCase);
VSUPT_REGEX_BENCHMARKS(Greedy, greedyCase);
VSUPT_REGEX_BENCHMARKS(StartOver, startOverCase);

// A number found from the index where it stands, in a short line: the cost
// of one find is its fixed cost, with little walking.
struct NumberAtIndex {
    std::string text = "reading 42 at 17:05, then 3.14159 and 2.71828 later";
    std::size_t start = text.find("3.14159");
    std::size_t length = 7;
};

const NumberAtIndex& numberAtIndex()
{
    static const NumberAtIndex c;
    return c;
}

void BM_VornFind_NumberAtIndex(benchmark::State& state)
{
    const NumberAtIndex& c = numberAtIndex();
    VornRegularExpression<std::string> expression;
    expression.setPattern("[0-9]+\\.[0-9]+");
    unsigned long length = 0;
    if (expression.find(c.text, length, c.start) != c.start || length != c.length) {
        state.SkipWithError("wrong match");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(expression.find(c.text, length, c.start));
    }
}
BENCHMARK(BM_VornFind_NumberAtIndex);

void BM_StdRegexSearch_NumberAtIndex(benchmark::State& state)
{
    const NumberAtIndex& c = numberAtIndex();
    const std::regex expression("[0-9]+\\.[0-9]+");
    std::smatch match;
    const auto from = c.text.begin() + static_cast<std::ptrdiff_t>(c.start);
    if (!std::regex_search(from, c.text.end(), match, expression) || match.position(0) != 0 ||
        static_cast<std::size_t>(match.length(0)) != c.length) {
        state.SkipWithError("wrong match");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::regex_search(from, c.text.end(), match, expression));
    }
}
BENCHMARK(BM_StdRegexSearch_NumberAtIndex);

void BM_PosixRegexec_NumberAtIndex(benchmark::State& state)
{
    const NumberAtIndex& c = numberAtIndex();
    regex_t expression;
    if (regcomp(&expression, "[0-9]+\\.[0-9]+", REG_EXTENDED) != 0) {
        state.SkipWithError("regcomp failed");
        return;
    }
    regmatch_t match[1];
    const char* from = c.text.c_str() + c.start;
    if (regexec(&expression, from, 1, match, 0) != 0 || match[0].rm_so != 0 ||
        static_cast<std::size_t>(match[0].rm_eo) != c.length) {
        state.SkipWithError("wrong match");
    } else {
        for (auto _ : state) {
            benchmark::DoNotOptimize(regexec(&expression, from, 1, match, 0));
        }
    }
    regfree(&expression);
}
BENCHMARK(BM_PosixRegexec_NumberAtIndex);

// A pattern of n tokens whose first fails at once: what a find costs beyond
// the walk, as the pattern grows.
void BM_VornFind_PatternSize(benchmark::State& state)
{
    std::string pattern = "q";
    for (int64_t i = 1; i < state.range(0); ++i) {
        pattern += "[ab]";
    }
    VornRegularExpression<std::string> expression;
    expression.setPattern(pattern);
    const std::string text = "abcabc";
    for (auto _ : state) {
        benchmark::DoNotOptimize(expression.find(text, 0));
    }
}
BENCHMARK(BM_VornFind_PatternSize)->RangeMultiplier(4)->Range(1, 1024);

// How find scales with the length n of the text the walk covers.
void runScaling(benchmark::State& state, const char* pattern, const std::string& text)
{
    VornRegularExpression<std::string> expression;
    expression.setPattern(pattern);
    for (auto _ : state) {
        benchmark::DoNotOptimize(expression.find(text, 0));
    }
    state.SetComplexityN(static_cast<int64_t>(text.size()));
}

// A repeated set over n digits: the stack holds one run, whatever n.
void BM_VornFind_RepeatedSet(benchmark::State& state)
{
    runScaling(state, "[0-9]+", repeated("3141592653", "", static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(BM_VornFind_RepeatedSet)->RangeMultiplier(8)->Range(64, 1 << 20)->Complexity(benchmark::oN);

// a.*b over an `a` and n letters with no `b`: the greedy run is given back
// one entry at a time, n times, before the walk gives up.
void BM_VornFind_BackingUp(benchmark::State& state)
{
    runScaling(state, "a.*b", "a" + repeated("x", "", static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(BM_VornFind_BackingUp)->RangeMultiplier(8)->Range(64, 1 << 20)->Complexity(benchmark::oN);

// Searches that cannot succeed, over n = 1 MiB / 10 and 10n characters.
// The first three lack a literal the pattern needs; the last two are
// patterns whose every start over used to walk the rest of the text again.
// The peer is one scan of the text for the missing character, the least a
// search that proves its absence can cost, and regexec where its own search
// is linear (it is quadratic on a.*b.*c and [0-9]+x, as the old walk was).
constexpr std::size_t kFailingSize = kTextSize / 10;

const std::string& failingText(const char* pattern, std::size_t size)
{
    static std::map<std::pair<std::string, std::size_t>, std::string> texts;
    std::string& text = texts[{pattern, size}];
    if (text.empty()) {
        const std::string unit = pattern == std::string("[0-9]+x")     ? "3141592653"
                                 : pattern == std::string("a*a*a*a*b") ? "a"
                                                                       : "a brown owl jumps over the lazy dog ";
        text = repeated(unit, "", size);
    }
    return text;
}

char missingCharacter(const char* pattern)
{
    return pattern[std::char_traits<char>::length(pattern) - 1];
}

void runFailing(benchmark::State& state, const char* pattern)
{
    const std::string& text = failingText(pattern, static_cast<std::size_t>(state.range(0)));
    VornRegularExpression<std::string> expression;
    expression.setPattern(pattern);
    if (expression.find(text, 0) != std::string::npos || text.find(missingCharacter(pattern)) != std::string::npos) {
        state.SkipWithError("the search succeeds");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(expression.find(text, 0));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void runScanPeer(benchmark::State& state, const char* pattern)
{
    const std::string& text = failingText(pattern, static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.find(missingCharacter(pattern)));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void runRegexecPeer(benchmark::State& state, const char* pattern)
{
    const std::string& text = failingText(pattern, static_cast<std::size_t>(state.range(0)));
    regex_t expression;
    if (regcomp(&expression, pattern, REG_EXTENDED) != 0) {
        state.SkipWithError("regcomp failed");
        return;
    }
    regmatch_t match[1];
    for (auto _ : state) {
        benchmark::DoNotOptimize(regexec(&expression, text.c_str(), 1, match, 0));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
    regfree(&expression);
}

#define VSUPT_FAILING_BENCHMARKS(Name, pattern)                                                       \
    void BM_VornFail_##Name(benchmark::State& state) { runFailing(state, pattern); }                  \
    void BM_ScanPeer_##Name(benchmark::State& state) { runScanPeer(state, pattern); }                 \
    BENCHMARK(BM_VornFail_##Name)->Arg(kFailingSize)->Arg(10 * kFailingSize)->Unit(benchmark::kMicrosecond); \
    BENCHMARK(BM_ScanPeer_##Name)->Arg(10 * kFailingSize)->Unit(benchmark::kMicrosecond)

VSUPT_FAILING_BENCHMARKS(DotStarC, ".*c");
VSUPT_FAILING_BENCHMARKS(ABC, "a.*b.*c");
VSUPT_FAILING_BENCHMARKS(DigitsX, "[0-9]+x");
VSUPT_FAILING_BENCHMARKS(ThreeDotStarsX, ".*.*.*x");
VSUPT_FAILING_BENCHMARKS(FourAStarsB, "a*a*a*a*b");
// a*a*a*a*b also over 32 KiB, where the old walk took seconds.
BENCHMARK(BM_VornFail_FourAStarsB)->Arg(32 * 1024)->Unit(benchmark::kMicrosecond);

void BM_PosixRegexecFail_DotStarC(benchmark::State& state) { runRegexecPeer(state, ".*c"); }
void BM_PosixRegexecFail_ThreeDotStarsX(benchmark::State& state) { runRegexecPeer(state, ".*.*.*x"); }
void BM_PosixRegexecFail_FourAStarsB(benchmark::State& state) { runRegexecPeer(state, "a*a*a*a*b"); }
BENCHMARK(BM_PosixRegexecFail_DotStarC)->Arg(10 * kFailingSize)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PosixRegexecFail_ThreeDotStarsX)->Arg(10 * kFailingSize)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PosixRegexecFail_FourAStarsB)->Arg(10 * kFailingSize)->Unit(benchmark::kMicrosecond);

}  // namespace
