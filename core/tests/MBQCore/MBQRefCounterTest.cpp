#include <gtest/gtest.h>

#include <boost/intrusive_ptr.hpp>
#include <thread>
#include <vector>

#include "MBQCore/MBQRefCounter.h"

namespace MBQ {
namespace {

// An object that reaches the counter through two bases, as the cache classes do: deriving
// virtually, they share one count. It tells when it is destroyed.
struct Left : virtual MBQRefCounter {};
struct Right : virtual MBQRefCounter {};
struct Counted : Left, Right {
  explicit Counted(int* destroyed) : destroyed_(destroyed) {}
  ~Counted() override { ++*destroyed_; }
  int* destroyed_;
};

TEST(MBQRefCounterTest, CopyStartsUnowned) {
  int destroyed = 0;
  boost::intrusive_ptr<Counted> original(new Counted(&destroyed));
  boost::intrusive_ptr<Counted> extra = original;
  boost::intrusive_ptr<Counted> copy(new Counted(*original));
  EXPECT_EQ(1u, copy->useCount());
  *copy = *original;  // assignment keeps each object's own count
  EXPECT_EQ(1u, copy->useCount());
  EXPECT_EQ(2u, original->useCount());
  copy.reset();
  EXPECT_EQ(1, destroyed);
  EXPECT_EQ(2u, original->useCount());
}

TEST(MBQRefCounterTest, VirtualBasesShareOneCount) {
  int destroyed = 0;
  boost::intrusive_ptr<Counted> both(new Counted(&destroyed));
  boost::intrusive_ptr<Left> left = both;
  boost::intrusive_ptr<const Right> right(both.get());
  EXPECT_EQ(3u, both->useCount());
  both.reset();
  left.reset();
  EXPECT_EQ(0, destroyed);
  right.reset();
  EXPECT_EQ(1, destroyed);
}

TEST(MBQRefCounterTest, HandlesMayBeCopiedFromManyThreads) {
  int destroyed = 0;
  boost::intrusive_ptr<Counted> shared(new Counted(&destroyed));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([shared] {
      for (int i = 0; i < 20000; ++i) {
        boost::intrusive_ptr<Counted> copy = shared;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(1u, shared->useCount());
  shared.reset();
  EXPECT_EQ(1, destroyed);
}

}  // namespace
}  // namespace MBQ
