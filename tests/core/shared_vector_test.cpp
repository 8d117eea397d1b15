// SharedVector: copies share storage until one of them is mutated; equality
// and hashing go by the elements.

#include "core/shared_vector.hpp"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace orvane::core {
namespace {

using IntVector = SharedVector<int>;

TEST(SharedVectorTest, EqualityAndHashGoByElementsHoweverBuilt) {
  const IntVector fresh;
  IntVector emptied{1, 2, 3};
  emptied.mutate().clear();
  EXPECT_TRUE(fresh == emptied && emptied == fresh && fresh == IntVector(std::vector<int>{}));
  EXPECT_EQ(hashValue(emptied), hashValue(fresh));
  EXPECT_NE(fresh, IntVector{0});
  const IntVector a{1, 2, 3}, separate{1, 2, 3};
  EXPECT_EQ(a, separate);
  EXPECT_EQ(hashValue(a), hashValue(separate));
  EXPECT_NE(a, (IntVector{1, 2, 4}));
  EXPECT_NE(a, (IntVector{1, 2}));
  EXPECT_NE(hashValue(a), hashValue(IntVector{3, 2, 1}));
  IntVector edited = a;
  edited.mutate()[2] = 9;
  edited.mutate()[2] = 3;
  EXPECT_FALSE(edited.sharesStorageWith(a));
  EXPECT_EQ(edited, a);
}

TEST(SharedVectorTest, CopiesShareStorageUntilOneIsMutated) {
  IntVector original{1, 2, 3};
  const IntVector first = original, second = original;
  EXPECT_TRUE(first.sharesStorageWith(original));
  original.mutate()[1] = 20;
  EXPECT_FALSE(original.sharesStorageWith(first));
  EXPECT_EQ(original.items(), (std::vector<int>{1, 20, 3}));
  EXPECT_EQ(first.items(), (std::vector<int>{1, 2, 3}));
  EXPECT_TRUE(first.sharesStorageWith(second));  // the untouched copies still share
  // A sole owner writes in place, also once the last other copy is gone.
  const std::vector<int>* storage = &original.items();
  { const IntVector gone = original; }
  original.mutate().push_back(4);
  EXPECT_EQ(&original.items(), storage);
  EXPECT_EQ(original.items(), (std::vector<int>{1, 20, 3, 4}));
  // An empty list starts fresh storage and leaves its copy empty.
  IntVector empty;
  const IntVector emptyCopy = empty;
  empty.mutate().push_back(1);
  EXPECT_EQ(empty.items(), std::vector<int>{1});
  EXPECT_TRUE(emptyCopy.empty());
}

TEST(SharedVectorTest, CopiesOnOtherThreadsMutateIndependently) {
  const IntVector original(std::vector<int>(1000, 7));
  std::vector<IntVector> results(4);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      IntVector mine = original;
      for (int round = 0; round < 200; ++round) {
        const IntVector snapshot = mine;  // forces a copy on the next write
        for (int& x : mine.mutate()) x += t + 1;
      }
      results[static_cast<std::size_t>(t)] = mine;
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(original.items(), std::vector<int>(1000, 7));
  for (std::size_t t = 0; t < 4; ++t)
    EXPECT_EQ(results[t].items(), std::vector<int>(1000, 7 + 200 * static_cast<int>(t + 1)));
}

}  // namespace
}  // namespace orvane::core
