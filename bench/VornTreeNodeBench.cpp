// Adding and finding by path in trees of about 100 000 leaves, built in
// three shapes: fan-out 10 over five levels, 47 over three and 317 over two.
// A step down costs the logarithm of the fan-out, so the wider, shallower
// shapes should cost no more than the narrow, deep one; the ratios between
// the shapes show it. A tree of std::map levels is the peer for finding.
// Adding children in descending order, each at the front of the list, is
// measured at 2 000 and 20 000 children against a std::multimap of the keys,
// with a scaling row that shows whether the cost grows with n log n.
#include "BenchRatio.h"

#include <vsupt/VornTreeNode.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using VornSupport::VornTreeNode;
using Path = std::vector<std::string>;

// Every leaf path of the shape, shuffled so that no walk profits from order.
std::vector<Path> leafPaths(int fanOut, int depth)
{
    std::vector<Path> paths(1);
    for (int level = 0; level < depth; ++level) {
        std::vector<Path> longer;
        for (const Path& path : paths) {
            for (int i = 0; i < fanOut; ++i) {
                longer.push_back(path);
                longer.back().push_back("key" + std::to_string(i));
            }
        }
        paths.swap(longer);
    }
    std::shuffle(paths.begin(), paths.end(), std::mt19937(42));
    return paths;
}

int depthFor(int fanOut)
{
    return fanOut == 10 ? 5 : fanOut == 47 ? 3 : 2;
}

void buildTree(VornTreeNode& root, const std::vector<Path>& paths)
{
    for (const Path& path : paths) {
        Path consumed = path;
        root.add(new VornTreeNode, consumed);
    }
}

// One iteration builds the whole tree; the time per add is shown as items.
void BM_VornTreeNode_AddByPath(benchmark::State& state)
{
    const std::vector<Path> paths = leafPaths(int(state.range(0)), depthFor(int(state.range(0))));
    for (auto _ : state) {
        VornTreeNode root;
        buildTree(root, paths);
    }
    state.SetItemsProcessed(state.iterations() * long(paths.size()));
}
BENCHMARK(BM_VornTreeNode_AddByPath)->Arg(10)->Arg(47)->Arg(317)->Unit(benchmark::kMillisecond);

void BM_VornTreeNode_GetNodeByPath(benchmark::State& state)
{
    const std::vector<Path> paths = leafPaths(int(state.range(0)), depthFor(int(state.range(0))));
    VornTreeNode root;
    buildTree(root, paths);
    std::size_t next = 0;
    for (auto _ : state) {
        Path consumed = paths[next];
        benchmark::DoNotOptimize(root.getNode(consumed));
        next = next + 1 == paths.size() ? 0 : next + 1;
    }
}
BENCHMARK(BM_VornTreeNode_GetNodeByPath)->Arg(10)->Arg(47)->Arg(317);

struct MapNode {
    std::map<std::string, MapNode> children;
};

// The same walk over std::map levels, with the path copied as the tree's
// lookup must.
void BM_MapTree_GetNodeByPath(benchmark::State& state)
{
    const std::vector<Path> paths = leafPaths(int(state.range(0)), depthFor(int(state.range(0))));
    MapNode root;
    for (const Path& path : paths) {
        MapNode* node = &root;
        for (const std::string& key : path) {
            node = &node->children[key];
        }
    }
    std::size_t next = 0;
    for (auto _ : state) {
        Path consumed = paths[next];
        const MapNode* node = &root;
        for (const std::string& key : consumed) {
            const auto child = node->children.find(key);
            node = child == node->children.end() ? nullptr : &child->second;
            if (node == nullptr) {
                break;
            }
        }
        benchmark::DoNotOptimize(node);
        next = next + 1 == paths.size() ? 0 : next + 1;
    }
}
BENCHMARK(BM_MapTree_GetNodeByPath)->Arg(317);

// Keys that sort in the order of their numbers, from the highest down.
std::vector<std::string> descendingKeys(int count)
{
    std::vector<std::string> keys;
    char key[16];
    for (int i = count; i > 0; --i) {
        std::snprintf(key, sizeof key, "%08d", i);
        keys.push_back(key);
    }
    return keys;
}

void BM_VornTreeNode_AddDescending(benchmark::State& state)
{
    const std::vector<std::string> keys = descendingKeys(int(state.range(0)));
    for (auto _ : state) {
        VornTreeNode root;
        for (const std::string& key : keys) {
            root.add(new VornTreeNode(key));
        }
    }
}
BENCHMARK(BM_VornTreeNode_AddDescending)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond);

void BM_Multimap_AddDescending(benchmark::State& state)
{
    const std::vector<std::string> keys = descendingKeys(int(state.range(0)));
    for (auto _ : state) {
        std::multimap<std::string, MapNode> children;
        for (const std::string& key : keys) {
            children.emplace(key, MapNode());
        }
        benchmark::DoNotOptimize(children.size());
    }
}
BENCHMARK(BM_Multimap_AddDescending)->Arg(20000)->Unit(benchmark::kMillisecond);

const vsupt_bench::RatioRegistration ratios{
    {"add by path, fan-out 47 vs 10", "BM_VornTreeNode_AddByPath/47", "BM_VornTreeNode_AddByPath/10", 0},
    {"add by path, fan-out 317 vs 10", "BM_VornTreeNode_AddByPath/317", "BM_VornTreeNode_AddByPath/10", 1.3},
    {"getNode by path, fan-out 47 vs 10", "BM_VornTreeNode_GetNodeByPath/47", "BM_VornTreeNode_GetNodeByPath/10",
     0},
    {"getNode by path, fan-out 317 vs 10", "BM_VornTreeNode_GetNodeByPath/317",
     "BM_VornTreeNode_GetNodeByPath/10", 1.3},
    {"getNode by path, fan-out 317 vs std::map levels", "BM_VornTreeNode_GetNodeByPath/317",
     "BM_MapTree_GetNodeByPath/317", 0},
    {"20 000 children in descending order vs std::multimap", "BM_VornTreeNode_AddDescending/20000",
     "BM_Multimap_AddDescending/20000", 0},
    {"children in descending order, 20 000 vs 2 000", "BM_VornTreeNode_AddDescending/20000",
     "BM_VornTreeNode_AddDescending/2000", 0},
};

}  // namespace
