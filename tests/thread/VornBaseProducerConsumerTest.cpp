#include "ProducerConsumerQueue.h"
#include "support/LogRecords.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using log_records::recordsAt;

namespace {

// Several producers and consumers at once are the example program's run.
class CountingQueue : public SynchronizedQueue<int> {
public:
    void clear() override
    {
        ++m_clears;
        SynchronizedQueue<int>::clear();
    }

    int m_clears = 0;
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
    EXPECT_EQ(queue.m_clears, 0);
}

TEST(VornBaseProducerConsumerTest, ASentinelWithClearingEmptiesTheQueueOnceAndEndsEveryConsumer)
{
    CountingQueue queue;
    ProducerConsumer<int> pair(queue);
    std::vector<std::thread> consumers;
    for (int i = 0; i < 3; ++i) {
        consumers.emplace_back([&] {
            int item;
            while (pair.consume(item)) {
            }
        });
    }
    const auto records = recordsAt(9, [&] {
        queue.push(8);
        queue.push(9);
        pair.produceSentinel(true);
    });
    for (std::thread& consumer : consumers) {
        consumer.join();
    }
    EXPECT_EQ(queue.m_clears, 1);
    EXPECT_EQ(queue.size(), 0u);
    EXPECT_EQ(records, (std::vector<std::string>{"VornBaseProducerConsumer::produceSentinel: waiting for lock",
                                                 "VornBaseProducerConsumer::produceSentinel: adding sentinel",
                                                 "VornBaseProducerConsumer::produceSentinel: clearing queue"}));
}
