#include "ProducerConsumerQueue.h"
#include "support/LogRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <thread>
#include <vector>

using log_records::recordsAt;

namespace {

class CountingQueue : public SynchronizedQueue<int> {
public:
    void clear() override
    {
        ++m_clears;
        SynchronizedQueue<int>::clear();
    }

    int m_clears = 0;
};

// Consumers that take items until the pair ends, each into its own list.
class Consumers {
public:
    Consumers(ProducerConsumer<int>& pair, int count) : m_taken(count)
    {
        for (auto& taken : m_taken) {
            m_threads.emplace_back([&pair, &taken] {
                int item;
                while (pair.consume(item)) {
                    taken.push_back(item);
                }
            });
        }
    }

    // Every item taken, in ascending order, once all consumers have ended.
    std::vector<int> join()
    {
        std::vector<int> all;
        for (std::size_t i = 0; i < m_threads.size(); ++i) {
            m_threads[i].join();
            all.insert(all.end(), m_taken[i].begin(), m_taken[i].end());
        }
        std::sort(all.begin(), all.end());
        return all;
    }

private:
    std::vector<std::vector<int>> m_taken;
    std::vector<std::thread> m_threads;
};

}  // namespace

TEST(VornBaseProducerConsumerTest, EveryItemOfSeveralProducersIsConsumedOnceBeforeTheSentinelEndsAll)
{
    const int producers = 4;
    const int itemsEach = 5000;
    SynchronizedQueue<int> queue;
    ProducerConsumer<int> pair(queue);
    Consumers consumers(pair, 3);
    std::vector<std::thread> producing;
    for (int p = 0; p < producers; ++p) {
        producing.emplace_back([&pair, p] {
            for (int item = p * itemsEach; item < (p + 1) * itemsEach; ++item) {
                pair.produce(item);
            }
        });
    }
    for (auto& producer : producing) {
        producer.join();
    }
    pair.produceSentinel(false);
    std::vector<int> expected(producers * itemsEach);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(consumers.join(), expected);
}

TEST(VornBaseProducerConsumerTest, ASentinelWithoutClearingLetsTheConsumersDrainTheQueue)
{
    CountingQueue queue;
    ProducerConsumer<int> pair(queue);
    for (int item = 0; item < 3; ++item) {
        pair.produce(item);
    }
    pair.produceSentinel(false);
    pair.produceSentinel(false);
    EXPECT_EQ(queue.m_clears, 0);
    EXPECT_EQ(Consumers(pair, 2).join(), (std::vector<int>{0, 1, 2}));
}

TEST(VornBaseProducerConsumerTest, ASentinelWithClearingEmptiesTheQueueOnceAndEndsTheWaitingConsumers)
{
    CountingQueue queue;
    ProducerConsumer<int> pair(queue);
    Consumers consumers(pair, 2);
    pair.produce(7);
    const auto records = recordsAt(9, [&] {
        pair.lockSyncMutex();
        queue.push(8);
        queue.push(9);
        pair.unlockSyncMutex();
        pair.produceSentinel(true);
    });
    EXPECT_EQ(queue.m_clears, 1);
    EXPECT_EQ(queue.size(), 0u);
    const std::vector<int> taken = consumers.join();
    EXPECT_TRUE(taken.empty() || taken == std::vector<int>{7});
    EXPECT_EQ(records, (std::vector<std::string>{"VornBaseProducerConsumer::produceSentinel: waiting for lock",
                                                 "VornBaseProducerConsumer::produceSentinel: adding sentinel",
                                                 "VornBaseProducerConsumer::produceSentinel: clearing queue"}));
}
