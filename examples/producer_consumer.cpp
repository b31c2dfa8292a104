// Several producer threads hand numbered items to several consumer threads
// through one typed queue; a sentinel ends the consumers once the producers
// are done and the queue is drained. Prints what each consumer took and
// whether every item arrived exactly once.
#include "ProducerConsumerQueue.h"

#include <vsupt/VornThread.h>

#include <cstdio>
#include <memory>
#include <vector>

using namespace VornSupport;

namespace {

const int producerCount = 3;
const int consumerCount = 4;
const int itemsPerProducer = 10000;

class Producer : public VornThread {
public:
    Producer(ProducerConsumer<int>& pair, int first) : VornThread("Producer"), m_pair(pair), m_first(first) {}
    ~Producer() override { waitForThreadExit(); }

    int run() override
    {
        for (int item = m_first; item < m_first + itemsPerProducer; ++item) {
            m_pair.produce(item);
        }
        return 0;
    }

private:
    ProducerConsumer<int>& m_pair;
    int m_first;
};

class Consumer : public VornThread {
public:
    explicit Consumer(ProducerConsumer<int>& pair) : VornThread("Consumer"), m_pair(pair) {}
    ~Consumer() override { waitForThreadExit(); }

    int run() override
    {
        int item;
        while (m_pair.consume(item)) {
            ++m_count;
            m_sum += item;
        }
        return 0;
    }

    long m_count = 0;
    long long m_sum = 0;

private:
    ProducerConsumer<int>& m_pair;
};

}  // namespace

int main()
{
    SynchronizedQueue<int> queue;
    ProducerConsumer<int> pair(queue);

    std::vector<std::unique_ptr<Consumer>> consumers;
    for (int i = 0; i < consumerCount; ++i) {
        consumers.push_back(std::make_unique<Consumer>(pair));
        consumers.back()->start();
    }
    std::vector<std::unique_ptr<Producer>> producers;
    for (int i = 0; i < producerCount; ++i) {
        producers.push_back(std::make_unique<Producer>(pair, i * itemsPerProducer));
        producers.back()->start();
    }
    for (auto& producer : producers) {
        producer->waitForThreadExit();
    }
    pair.produceSentinel(false);

    long count = 0;
    long long sum = 0;
    for (int i = 0; i < consumerCount; ++i) {
        consumers[i]->waitForThreadExit();
        std::printf("consumer %d took %ld items\n", i, consumers[i]->m_count);
        count += consumers[i]->m_count;
        sum += consumers[i]->m_sum;
    }
    const long expectedCount = long(producerCount) * itemsPerProducer;
    const long long expectedSum = (long long)expectedCount * (expectedCount - 1) / 2;
    const bool complete = count == expectedCount && sum == expectedSum;
    std::printf("%ld of %ld items consumed: %s\n", count, expectedCount, complete ? "all, once each" : "MISMATCH");
    return complete ? 0 : 1;
}
