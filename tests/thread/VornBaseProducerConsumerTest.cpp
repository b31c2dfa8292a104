#include "ProducerConsumerQueue.h"
#include "support/LogRecords.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

// Several producers and consumers at once are the example program's run.
struct CountingQueue : SynchronizedQueue<int> {
    void clear() override
    {
        ++clears;
        SynchronizedQueue<int>::clear();
    }
    int clears = 0;
};

}  // namespace

TEST(VornBaseProducerConsumerTest, ASentinelWithoutClearingLetsTheConsumerDrainTheQueue)
{
    CountingQueue queue;
    ProducerConsumer<int> pair(queue);
    pair.produce(1);
    pair.produce(2);
    pair.produceSentinel(false);
    pair.produceSentinel(false);
    int item = 0;
    EXPECT_TRUE(pair.consume(item) && item == 1);
    EXPECT_TRUE(pair.consume(item) && item == 2);
    EXPECT_FALSE(pair.consume(item));
    EXPECT_EQ(queue.clears, 0);
}

TEST(VornBaseProducerConsumerTest, ASentinelWithClearingEmptiesTheQueueOnceAndEndsEveryConsumer)
{
    CountingQueue queue;
    ProducerConsumer<int> pair(queue);
    std::vector<std::thread> consumers;
    for (int i = 0; i < 3; ++i) {
        consumers.emplace_back([&] {
            for (int item; pair.consume(item);) {
            }
        });
    }
    const auto records = log_records::recordsAt(9, [&] {
        queue.push(8);
        queue.push(9);
        pair.produceSentinel(true);
    });
    for (std::thread& consumer : consumers) {
        consumer.join();
    }
    EXPECT_EQ(queue.clears, 1);
    EXPECT_EQ(queue.size(), 0u);
    const std::string at = "VornBaseProducerConsumer::produceSentinel: ";
    EXPECT_EQ(records, (std::vector<std::string>{at + "waiting for lock", at + "adding sentinel", at + "clearing queue"}));
}
