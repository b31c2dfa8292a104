// Adding and finding by path in trees of about 100 000 leaves, built in
// three shapes: fan-out 10 over five levels, 47 over three and 317 over two.
// Child lists are walked from the front, so the cost of a step grows with
// the fan-out; the ratios between the shapes show by how much. A tree of
// std::map levels, which finds a step in logarithmic time, is the peer for
// finding.
#include "BenchRatio.h"

#include <vsupt/VornTreeNode.h>

#include <algorithm>
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

const vsupt_bench::RatioRegistration ratios{
    {"add by path, fan-out 47 vs 10", "BM_VornTreeNode_AddByPath/47", "BM_VornTreeNode_AddByPath/10", 0},
    {"add by path, fan-out 317 vs 10", "BM_VornTreeNode_AddByPath/317", "BM_VornTreeNode_AddByPath/10", 0},
    {"getNode by path, fan-out 47 vs 10", "BM_VornTreeNode_GetNodeByPath/47", "BM_VornTreeNode_GetNodeByPath/10",
     0},
    {"getNode by path, fan-out 317 vs 10", "BM_VornTreeNode_GetNodeByPath/317",
     "BM_VornTreeNode_GetNodeByPath/10", 0},
    {"getNode by path, fan-out 317 vs std::map levels", "BM_VornTreeNode_GetNodeByPath/317",
     "BM_MapTree_GetNodeByPath/317", 0},
};

}  // namespace
