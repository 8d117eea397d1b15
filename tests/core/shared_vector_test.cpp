// SharedVector: a copy-on-write list. Copies share storage until one of them
// is mutated; equality and hashing go by the elements.

#include "core/shared_vector.hpp"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace orvane::core {
namespace {

using IntVector = SharedVector<int>;

TEST(SharedVectorTest, EmptyListsAreEqualHoweverBuilt) {
  const IntVector a;
  EXPECT_TRUE(a.empty());
  EXPECT_EQ(a.size(), 0u);
  EXPECT_TRUE(a.begin() == a.end());
  EXPECT_TRUE(a.items().empty());
  const IntVector fromEmptyVector(std::vector<int>{});
  const IntVector fromEmptyBraces{};
  EXPECT_EQ(a, fromEmptyVector);
  EXPECT_EQ(a, fromEmptyBraces);
  EXPECT_EQ(hashValue(a), hashValue(fromEmptyVector));

  // Emptied through mutation: still equal to a new empty list.
  IntVector emptied{1, 2, 3};
  emptied.mutate().clear();
  EXPECT_TRUE(emptied.empty());
  EXPECT_EQ(emptied, a);
  EXPECT_EQ(a, emptied);
  EXPECT_EQ(hashValue(emptied), hashValue(a));
  EXPECT_NE(a, IntVector{0});
}

TEST(SharedVectorTest, KeepsElementsInOrder) {
  const IntVector v{4, 8, 15, 16, 23, 42};
  ASSERT_EQ(v.size(), 6u);
  EXPECT_FALSE(v.empty());
  EXPECT_EQ(v[0], 4);
  EXPECT_EQ(v[5], 42);
  EXPECT_EQ(v.front(), 4);
  EXPECT_EQ(v.back(), 42);
  EXPECT_EQ(std::vector<int>(v.begin(), v.end()), (std::vector<int>{4, 8, 15, 16, 23, 42}));
  EXPECT_EQ(v.items(), (std::vector<int>{4, 8, 15, 16, 23, 42}));
  const IntVector fromVector(std::vector<int>{4, 8, 15, 16, 23, 42});
  EXPECT_EQ(v, fromVector);
}

TEST(SharedVectorTest, CopiesShareStorageUntilMutated) {
  const IntVector a{1, 2, 3};
  IntVector b = a;
  EXPECT_TRUE(b.sharesStorageWith(a));
  EXPECT_EQ(a, b);
  b.mutate().push_back(4);
  EXPECT_FALSE(b.sharesStorageWith(a));
  EXPECT_EQ(a.items(), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(b.items(), (std::vector<int>{1, 2, 3, 4}));
  EXPECT_NE(a, b);
  // Separately built equal lists are equal without sharing.
  const IntVector c{1, 2, 3};
  EXPECT_FALSE(c.sharesStorageWith(a));
  EXPECT_EQ(a, c);
  EXPECT_EQ(hashValue(a), hashValue(c));
}

TEST(SharedVectorTest, MutatingTheOriginalLeavesCopiesAlone) {
  IntVector original{1, 2, 3};
  const IntVector first = original;
  const IntVector second = original;
  original.mutate()[1] = 20;
  EXPECT_EQ(original.items(), (std::vector<int>{1, 20, 3}));
  EXPECT_EQ(first.items(), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(second.items(), (std::vector<int>{1, 2, 3}));
  // The two untouched copies still share with each other.
  EXPECT_TRUE(first.sharesStorageWith(second));
  std::vector<int>& items = original.mutate();
  items.erase(items.begin());
  EXPECT_EQ(original.items(), (std::vector<int>{20, 3}));
  EXPECT_EQ(first.items(), (std::vector<int>{1, 2, 3}));
}

TEST(SharedVectorTest, MutatingASoleOwnerWritesInPlace) {
  IntVector v{1, 2, 3};
  const std::vector<int>* storage = &v.items();
  v.mutate().push_back(4);
  v.mutate()[0] = 0;
  EXPECT_EQ(&v.items(), storage);
  EXPECT_EQ(v.items(), (std::vector<int>{0, 2, 3, 4}));

  // Once the last other copy is gone, the storage is the survivor's alone.
  const std::vector<int>* shared;
  {
    const IntVector copy = v;
    shared = &copy.items();
    EXPECT_EQ(shared, storage);
  }
  v.mutate().push_back(5);
  EXPECT_EQ(&v.items(), storage);
}

TEST(SharedVectorTest, MutateOnAnEmptyListStartsAFreshOne) {
  IntVector a;
  IntVector b = a;
  a.mutate().push_back(1);
  EXPECT_EQ(a.items(), std::vector<int>{1});
  EXPECT_TRUE(b.empty());
  EXPECT_NE(a, b);
}

TEST(SharedVectorTest, EqualityAndHashGoByElements) {
  EXPECT_NE((IntVector{1, 2, 3}), (IntVector{1, 2, 4}));
  EXPECT_NE((IntVector{1, 2, 3}), (IntVector{1, 2}));
  EXPECT_NE((IntVector{1, 2}), (IntVector{1, 2, 3}));
  EXPECT_NE(hashValue(IntVector{1, 2, 3}), hashValue(IntVector{3, 2, 1}));
  IntVector edited{1, 2, 3};
  const IntVector before = edited;
  edited.mutate()[2] = 9;
  edited.mutate()[2] = 3;
  EXPECT_FALSE(edited.sharesStorageWith(before));
  EXPECT_EQ(edited, before);
  EXPECT_EQ(hashValue(edited), hashValue(before));

  const SharedVector<std::string> names{"a", "b"};
  SharedVector<std::string> renamed = names;
  renamed.mutate()[1] = "c";
  EXPECT_EQ(names[1], "b");
  EXPECT_EQ(renamed[1], "c");
  EXPECT_NE(names, renamed);
}

TEST(SharedVectorTest, CopiesOnOtherThreadsMutateIndependently) {
  std::vector<int> base(1000);
  for (int i = 0; i < 1000; ++i) base[static_cast<std::size_t>(i)] = i;
  const IntVector original(base);
  constexpr int kThreads = 4;
  std::vector<IntVector> results(kThreads);
  {
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        IntVector mine = original;
        for (int round = 0; round < 200; ++round) {
          IntVector snapshot = mine;  // forces a copy on the next write
          std::vector<int>& items = mine.mutate();
          for (int& x : items) x += t + 1;
        }
        results[static_cast<std::size_t>(t)] = mine;
      });
    }
    for (auto& th : threads) th.join();
  }
  EXPECT_EQ(original.items(), base);
  for (int t = 0; t < kThreads; ++t) {
    std::vector<int> expected = base;
    for (int& x : expected) x += 200 * (t + 1);
    EXPECT_EQ(results[static_cast<std::size_t>(t)].items(), expected) << "thread " << t;
  }
}

}  // namespace
}  // namespace orvane::core
