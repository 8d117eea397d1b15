// PersistentList: a chunked persistent list with boxed elements. Checked as
// the model relies on it: value semantics for copies, edits anywhere
// (including across chunk boundaries and chunk splits), equality of lists
// whose chunk boundaries differ, hashing, and storage sharing.

#include "core/persistent_list.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace orvane::core {
namespace {

using IntList = PersistentList<int>;

std::vector<int> iota(int n, int first = 0) {
  std::vector<int> v(static_cast<std::size_t>(n));
  std::iota(v.begin(), v.end(), first);
  return v;
}

// Walks the list both by iteration and by index and compares each with the
// expected elements.
void expectElements(const IntList& list, const std::vector<int>& expected) {
  ASSERT_EQ(list.size(), expected.size());
  EXPECT_EQ(list.empty(), expected.empty());
  std::size_t i = 0;
  for (const int& item : list) {
    ASSERT_LT(i, expected.size());
    EXPECT_EQ(item, expected[i]) << "iterating, at " << i;
    EXPECT_EQ(&item, &list[i]) << "iteration and operator[] disagree at " << i;
    ++i;
  }
  EXPECT_EQ(i, expected.size());
  for (std::size_t k = 0; k < expected.size(); ++k) {
    if (list[k] != expected[k]) {
      ADD_FAILURE() << "operator[] at " << k << ": " << list[k] << " != " << expected[k];
      break;
    }
  }
  EXPECT_EQ(list.toVector(), expected);
  if (!expected.empty()) {
    EXPECT_EQ(list.front(), expected.front());
    EXPECT_EQ(list.back(), expected.back());
  }
}

// A value that counts its copies, to see what an edit costs.
struct Counted {
  static inline int copies = 0;
  int value = 0;
  explicit Counted(int v) : value(v) {}
  Counted(const Counted& o) : value(o.value) { ++copies; }
  Counted& operator=(const Counted& o) {
    value = o.value;
    ++copies;
    return *this;
  }
  friend bool operator==(const Counted& a, const Counted& b) { return a.value == b.value; }
};

TEST(PersistentListTest, EmptyListHasNoElements) {
  const IntList a;
  EXPECT_TRUE(a.empty());
  EXPECT_EQ(a.size(), 0u);
  EXPECT_TRUE(a.begin() == a.end());
  EXPECT_FALSE(a.indexWhere([](int) { return true; }).has_value());
  EXPECT_TRUE(a.toVector().empty());
  const IntList fromEmptyVector(std::vector<int>{});
  const IntList fromEmptyBraces{};
  EXPECT_EQ(a, fromEmptyVector);
  EXPECT_EQ(a, fromEmptyBraces);
  EXPECT_EQ(hashValue(a), hashValue(fromEmptyVector));
  EXPECT_NE(a, IntList{0});
  EXPECT_NE(IntList{0}, a);
}

TEST(PersistentListTest, BuildsFromAVectorInOrder) {
  for (int n : {1, 31, 32, 33, 64, 65, 100, 1000}) {
    SCOPED_TRACE(n);
    expectElements(IntList(iota(n, 7)), iota(n, 7));
  }
  expectElements(IntList{3, 1, 2}, {3, 1, 2});
}

TEST(PersistentListTest, CopiesShareStorageUntilOneIsChanged) {
  const IntList a(iota(100));
  IntList b = a;
  EXPECT_TRUE(b.sharesStorageWith(a));
  EXPECT_TRUE(a.sharesStorageWith(b));
  EXPECT_EQ(a, b);
  b.set(50, -1);
  EXPECT_FALSE(b.sharesStorageWith(a));
  EXPECT_FALSE(a.sharesStorageWith(b));
  EXPECT_NE(a, b);
  // Lists built separately never share, even when equal.
  EXPECT_FALSE(IntList(iota(5)).sharesStorageWith(IntList(iota(5))));
}

TEST(PersistentListTest, CopiesAreIndependentAfterMutation) {
  const std::vector<int> original = iota(100);
  const IntList a(original);

  IntList b = a;
  b.set(50, -1);
  b.insert(0, -2);
  b.erase(99);  // the old element 98
  b.update(10, [](int& v) { v *= 100; });
  b.updateWhere([](int v) { return v % 10 == 3; }, [](int& v) { v = -v; });
  b.push_back(1000);
  expectElements(a, original);

  std::vector<int> expected = original;
  expected[50] = -1;
  expected.insert(expected.begin(), -2);
  expected.erase(expected.begin() + 99);
  expected[10] *= 100;
  for (int& v : expected)
    if (v % 10 == 3) v = -v;
  expected.push_back(1000);
  expectElements(b, expected);

  // Changing the original leaves an earlier copy alone too.
  IntList source(original);
  const IntList snapshot = source;
  source.set(0, 42);
  source.erase(1);
  source.insert(70, 7);
  source.clear();
  expectElements(snapshot, original);
  EXPECT_TRUE(source.empty());
}

TEST(PersistentListTest, InsertAtFrontMiddleEndAndChunkBoundaries) {
  // Built lists hold chunks of 32, so 32 and 64 are boundaries.
  for (std::size_t at : {0u, 1u, 31u, 32u, 33u, 50u, 64u, 99u, 100u}) {
    SCOPED_TRACE(at);
    IntList list(iota(100));
    std::vector<int> expected = iota(100);
    list.insert(at, -1);
    expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(at), -1);
    expectElements(list, expected);
  }
}

TEST(PersistentListTest, InsertPastTheEndAppends) {
  IntList list(iota(3));
  list.insert(3, 3);
  list.insert(100, 4);
  list.push_back(5);
  expectElements(list, {0, 1, 2, 3, 4, 5});
  IntList empty;
  empty.insert(5, 9);
  expectElements(empty, {9});
}

TEST(PersistentListTest, ManyInsertsAtOnePlaceSplitChunks) {
  // More than 64 inserts into one spot force the chunk there to split,
  // repeatedly.
  for (std::size_t at : {0u, 10u, 32u, 40u}) {
    SCOPED_TRACE(at);
    IntList list(iota(40));
    std::vector<int> expected = iota(40);
    for (int k = 0; k < 300; ++k) {
      list.insert(at, 1000 + k);
      expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(at), 1000 + k);
    }
    expectElements(list, expected);
    // Edits after the splits still land in the right place.
    list.set(at + 100, -5);
    expected[at + 100] = -5;
    list.erase(at + 65);
    expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(at + 65));
    expectElements(list, expected);
    EXPECT_EQ(list, IntList(expected));
  }
}

TEST(PersistentListTest, PushBackBuildsLongLists) {
  IntList list;
  for (int k = 0; k < 500; ++k) list.push_back(k);
  expectElements(list, iota(500));
}

TEST(PersistentListTest, EraseAtFrontMiddleEndAndChunkBoundaries) {
  for (std::size_t at : {0u, 31u, 32u, 33u, 63u, 64u, 96u, 99u}) {
    SCOPED_TRACE(at);
    IntList list(iota(100));
    std::vector<int> expected = iota(100);
    list.erase(at);
    expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(at));
    expectElements(list, expected);
  }
}

TEST(PersistentListTest, EraseOutOfRangeIsANoOp) {
  IntList list(iota(10));
  const IntList before = list;
  list.erase(10);
  list.erase(1000);
  expectElements(list, iota(10));
  EXPECT_EQ(list, before);
  IntList empty;
  empty.erase(0);
  EXPECT_TRUE(empty.empty());
}

TEST(PersistentListTest, EraseDownToEmptyBehavesLikeANewList) {
  for (int n : {1, 5, 40, 100}) {
    SCOPED_TRACE(n);
    IntList list(iota(n));
    const IntList copy = list;
    // Alternate between the front and the back, across whole chunks.
    for (int k = 0; k < n; ++k) list.erase(k % 2 == 0 ? 0 : list.size() - 1);
    expectElements(list, {});
    EXPECT_TRUE(list.begin() == list.end());
    EXPECT_EQ(list, IntList());
    EXPECT_EQ(IntList(), list);
    EXPECT_EQ(list, IntList{});
    EXPECT_EQ(hashValue(list), hashValue(IntList()));
    EXPECT_NE(list, copy);
    EXPECT_FALSE(list.indexWhere([](int) { return true; }).has_value());
    expectElements(copy, iota(n));
    // Usable again afterwards.
    list.insert(0, 2);
    list.insert(0, 1);
    list.push_back(3);
    expectElements(list, {1, 2, 3});
    EXPECT_EQ(list, (IntList{1, 2, 3}));
  }
}

TEST(PersistentListTest, SetReplacesOneElement) {
  for (std::size_t at : {0u, 31u, 32u, 63u, 64u, 99u}) {
    SCOPED_TRACE(at);
    IntList list(iota(100));
    std::vector<int> expected = iota(100);
    list.set(at, -7);
    expected[at] = -7;
    expectElements(list, expected);
  }
  IntList list(iota(5));
  list.set(5, 99);  // out of range: no-op
  expectElements(list, iota(5));
}

TEST(PersistentListTest, UpdateChangesOneElementInPlace) {
  IntList list(iota(100));
  std::vector<int> expected = iota(100);
  for (std::size_t at : {0u, 32u, 64u, 99u}) {
    list.update(at, [](int& v) { v += 1000; });
    expected[at] += 1000;
  }
  expectElements(list, expected);
  int calls = 0;
  list.update(100, [&](int&) { ++calls; });  // out of range: not called
  EXPECT_EQ(calls, 0);
  expectElements(list, expected);
}

TEST(PersistentListTest, UpdateWhereChangesMatchesInOrder) {
  IntList list(iota(200));
  std::vector<int> seen;
  list.updateWhere([](int v) { return v % 3 == 0; },
                   [&](int& v) {
                     seen.push_back(v);
                     v = -v;
                   });
  std::vector<int> expectedSeen;
  std::vector<int> expected = iota(200);
  for (int& v : expected) {
    if (v % 3 == 0) {
      expectedSeen.push_back(v);
      v = -v;
    }
  }
  EXPECT_EQ(seen, expectedSeen);
  expectElements(list, expected);

  // No match: nothing changes, storage stays shared with a copy.
  const IntList copy = list;
  list.updateWhere([](int v) { return v > 100000; }, [](int& v) { v = 0; });
  EXPECT_TRUE(list.sharesStorageWith(copy));
  // An empty list calls neither function.
  IntList empty;
  int calls = 0;
  empty.updateWhere([&](int) { return ++calls > 0; }, [&](int&) { ++calls; });
  EXPECT_EQ(calls, 0);
}

TEST(PersistentListTest, MutatingACopyCopiesOnlyTheChangedElement) {
  Counted::copies = 0;
  PersistentList<Counted> a;
  for (int k = 0; k < 1000; ++k) a.push_back(Counted(k));
  const int afterBuild = Counted::copies;

  PersistentList<Counted> b = a;
  EXPECT_EQ(Counted::copies, afterBuild);  // copying the list copies no element
  b.update(500, [](Counted& c) { c.value = -1; });
  EXPECT_EQ(Counted::copies, afterBuild + 1);  // only the changed element
  EXPECT_EQ(a[500].value, 500);
  EXPECT_EQ(b[500].value, -1);
  // Untouched elements are the very same objects in both lists.
  EXPECT_EQ(&a[499], &b[499]);
  EXPECT_EQ(&a[0], &b[0]);
  EXPECT_EQ(&a[999], &b[999]);
  EXPECT_NE(&a[500], &b[500]);

  // Updating an element this list alone holds changes it where it is.
  const Counted* where = &b[500];
  b.update(500, [](Counted& c) { c.value = -2; });
  EXPECT_EQ(&b[500], where);
  EXPECT_EQ(Counted::copies, afterBuild + 1);

  // updateWhere copies just the matches; the rest stay shared.
  PersistentList<Counted> c = a;
  c.updateWhere([](const Counted& x) { return x.value % 100 == 0; },
                [](Counted& x) { x.value += 1; });
  EXPECT_EQ(Counted::copies, afterBuild + 1 + 10);
  EXPECT_EQ(&a[1], &c[1]);
  EXPECT_NE(&a[100], &c[100]);
  EXPECT_EQ(c[100].value, 101);
  EXPECT_EQ(a[100].value, 100);
}

TEST(PersistentListTest, EqualListsWithDifferentChunkBoundariesAreEqual) {
  const std::vector<int> values = iota(300);
  const IntList built(values);  // chunks of 32
  IntList appended;             // grown at the end, splitting at 65
  for (int v : values) appended.push_back(v);
  IntList prepended;  // grown at the front
  for (auto it = values.rbegin(); it != values.rend(); ++it) prepended.insert(0, *it);
  std::vector<int> ends = iota(100);  // 0..99 and 200..299, then filled at index 100
  for (int v = 200; v < 300; ++v) ends.push_back(v);
  IntList middle(ends);
  for (int v = 199; v >= 100; --v) middle.insert(100, v);
  IntList scattered(std::vector<int>{});
  {
    // Build by inserting in a shuffled order of final positions.
    std::vector<int> order = values;
    std::mt19937 rng(7);
    std::shuffle(order.begin(), order.end(), rng);
    std::vector<int> mirror;
    for (int v : order) {
      const auto pos = std::lower_bound(mirror.begin(), mirror.end(), v) - mirror.begin();
      mirror.insert(mirror.begin() + pos, v);
      scattered.insert(static_cast<std::size_t>(pos), v);
    }
  }

  const std::vector<const IntList*> all = {&built, &appended, &prepended, &middle, &scattered};
  for (const IntList* x : all) {
    expectElements(*x, values);
    for (const IntList* y : all) {
      EXPECT_TRUE(*x == *y);
      EXPECT_EQ(hashValue(*x), hashValue(*y));
    }
  }
}

TEST(PersistentListTest, OneDifferentElementInAnyChunkMakesListsUnequal) {
  const std::vector<int> values = iota(300);
  const IntList built(values);
  IntList prepended;
  for (auto it = values.rbegin(); it != values.rend(); ++it) prepended.insert(0, *it);

  for (std::size_t at : {0u, 1u, 31u, 32u, 64u, 100u, 150u, 255u, 256u, 299u}) {
    SCOPED_TRACE(at);
    IntList changed = prepended;
    changed.set(at, -1);
    EXPECT_FALSE(built == changed);
    EXPECT_FALSE(changed == built);
    // A copy that shares all other chunks with the original.
    IntList sibling = built;
    sibling.set(at, -1);
    EXPECT_FALSE(built == sibling);
    EXPECT_FALSE(sibling == built);
    // Equal again once the same change is made to both, built differently.
    EXPECT_TRUE(changed == sibling);
  }
}

TEST(PersistentListTest, SharedChunksAtDifferentOffsetsAreComparedElementByElement) {
  // Three built chunks of 32: [0, 32), [32, 64), [64, 96). Values repeat with
  // period 5 except one, so that shifting by 5 changes the list only there.
  std::vector<int> values(96);
  for (int i = 0; i < 96; ++i) values[static_cast<std::size_t>(i)] = i % 5;
  values[40] = 99;
  const IntList base(values);

  // Both copies keep the middle chunk shared, one 5 places later than the
  // other: five elements prepended to one, five appended to the other.
  IntList front = base;
  for (int k = 0; k < 5; ++k) front.insert(static_cast<std::size_t>(k), k);
  IntList back = base;
  for (int k = 91; k < 96; ++k) back.push_back(values[static_cast<std::size_t>(k)]);

  std::vector<int> frontValues = {0, 1, 2, 3, 4};
  frontValues.insert(frontValues.end(), values.begin(), values.end());
  std::vector<int> backValues = values;
  backValues.insert(backValues.end(), values.begin() + 91, values.end());
  expectElements(front, frontValues);
  expectElements(back, backValues);
  // They differ only at 40 and 45, both inside the shifted shared chunk.
  ASSERT_NE(frontValues, backValues);
  EXPECT_FALSE(front == back);
  EXPECT_FALSE(back == front);
  EXPECT_EQ(front, IntList(frontValues));
  EXPECT_EQ(back, IntList(backValues));

  // Without the odd value the two are equal, shared chunk and all.
  IntList front2 = front;
  front2.set(45, 0);
  IntList back2 = back;
  back2.set(40, 0);
  EXPECT_TRUE(front2 == back2);
  EXPECT_TRUE(back2 == front2);
}

TEST(PersistentListTest, ListsOfDifferentLengthsAreUnequal) {
  const IntList a(iota(100));
  IntList b = a;
  b.push_back(100);
  EXPECT_NE(a, b);
  EXPECT_NE(b, a);
  IntList c = a;
  c.erase(99);
  EXPECT_NE(a, c);
  EXPECT_NE(IntList(iota(32)), IntList(iota(33)));
}

TEST(PersistentListTest, UndoneEditsCompareEqualWithoutSharingTheRoot) {
  const IntList a(iota(200));
  IntList b = a;
  b.set(150, -1);
  b.set(150, 150);
  EXPECT_FALSE(b.sharesStorageWith(a));
  EXPECT_EQ(a, b);
  EXPECT_EQ(hashValue(a), hashValue(b));

  IntList c = a;
  c.insert(0, -1);
  c.erase(0);
  EXPECT_EQ(a, c);
  IntList d = a;
  d.erase(40);
  d.insert(40, 40);
  EXPECT_EQ(a, d);
  IntList e = a;
  e.erase(40);
  e.insert(40, 41);
  EXPECT_NE(a, e);
}

TEST(PersistentListTest, HashDependsOnElementsAndOrder) {
  EXPECT_EQ(hashValue(IntList{1, 2, 3}), hashValue(IntList(std::vector<int>{1, 2, 3})));
  EXPECT_NE(hashValue(IntList{1, 2, 3}), hashValue(IntList{3, 2, 1}));
  EXPECT_NE(hashValue(IntList{1, 2, 3}), hashValue(IntList{1, 2}));
}

TEST(PersistentListTest, IndexWhereFindsTheFirstMatch) {
  IntList list(iota(200));
  list.set(150, 7);
  EXPECT_EQ(list.indexWhere([](int v) { return v == 7; }), 7u);
  EXPECT_EQ(list.indexWhere([](int v) { return v == 149; }), 149u);
  EXPECT_EQ(list.indexWhere([](int v) { return v > 195; }), 196u);
  EXPECT_EQ(list.indexWhere([](int v) { return v == 0; }), 0u);
  EXPECT_FALSE(list.indexWhere([](int v) { return v == 150; }).has_value());
  // Past a split chunk.
  for (int k = 0; k < 100; ++k) list.insert(10, -k);
  EXPECT_EQ(list.indexWhere([](int v) { return v == 11; }), 111u);
  EXPECT_EQ(list.indexWhere([](int v) { return v == -99; }), 10u);
}

TEST(PersistentListTest, HoldsStrings) {
  PersistentList<std::string> names{"intro", "title", "outro"};
  PersistentList<std::string> copy = names;
  copy.update(1, [](std::string& s) { s += " card"; });
  EXPECT_EQ(names[1], "title");
  EXPECT_EQ(copy[1], "title card");
  EXPECT_NE(names, copy);
  copy.set(1, "title");
  EXPECT_EQ(names, copy);
  EXPECT_EQ(hashValue(names), hashValue(copy));
  EXPECT_EQ(names.indexWhere([](const std::string& s) { return s == "outro"; }), 2u);
}

// Mirrors a list against a std::vector over thousands of random edits,
// keeping snapshots (copies) along the way to check they never change.
TEST(PersistentListTest, RandomEditsMatchAVector) {
  std::mt19937 rng(20240611);
  auto below = [&](std::size_t n) {
    return std::uniform_int_distribution<std::size_t>(0, n == 0 ? 0 : n - 1)(rng);
  };
  IntList list;
  std::vector<int> mirror;
  struct Snapshot {
    IntList list;
    std::vector<int> items;
  };
  std::vector<Snapshot> snapshots;
  int next = 0;

  for (int step = 0; step < 6000; ++step) {
    const std::size_t op = below(100);
    if (op < 30) {  // insert anywhere, sometimes past the end
      const std::size_t at = below(mirror.size() + 3);
      list.insert(at, next);
      mirror.insert(mirror.begin() + static_cast<std::ptrdiff_t>(std::min(at, mirror.size())), next);
      ++next;
    } else if (op < 38) {  // a run of inserts in one spot
      const std::size_t at = below(mirror.size() + 1);
      for (int k = 0; k < 20; ++k, ++next) {
        list.insert(at, next);
        mirror.insert(mirror.begin() + static_cast<std::ptrdiff_t>(at), next);
      }
    } else if (op < 43) {
      list.push_back(next);
      mirror.push_back(next++);
    } else if (op < 65) {  // erase, sometimes out of range
      const std::size_t at = below(mirror.size() + 2);
      list.erase(at);
      if (at < mirror.size()) mirror.erase(mirror.begin() + static_cast<std::ptrdiff_t>(at));
    } else if (op < 75) {
      const std::size_t at = below(mirror.size() + 1);
      list.set(at, -next);
      if (at < mirror.size()) mirror[at] = -next;
      ++next;
    } else if (op < 85) {
      const std::size_t at = below(mirror.size() + 1);
      auto change = [](int& v) { v = (v * 3 + 1) % 1000003; };
      list.update(at, change);
      if (at < mirror.size()) change(mirror[at]);
    } else if (op < 89) {
      const int m = static_cast<int>(below(7)) + 2;
      const int r = static_cast<int>(below(static_cast<std::size_t>(m)));
      auto pred = [m, r](int v) { return ((v % m) + m) % m == r; };
      list.updateWhere(pred, [](int& v) { v += 5; });
      for (int& v : mirror)
        if (pred(v)) v += 5;
    } else if (op < 97) {
      snapshots.push_back({list, mirror});
      EXPECT_TRUE(snapshots.back().list.sharesStorageWith(list));
    } else if (op < 98) {
      list.clear();
      mirror.clear();
    } else {  // continue from an older snapshot
      if (!snapshots.empty()) {
        const Snapshot& s = snapshots[below(snapshots.size())];
        list = s.list;
        mirror = s.items;
      }
    }

    ASSERT_EQ(list.size(), mirror.size()) << "step " << step;
    if (step % 10 == 0 || mirror.size() < 5) {
      ASSERT_EQ(list.toVector(), mirror) << "step " << step;
      const IntList rebuilt(mirror);
      ASSERT_TRUE(list == rebuilt) << "step " << step;
      ASSERT_TRUE(rebuilt == list) << "step " << step;
      ASSERT_EQ(hashValue(list), hashValue(rebuilt)) << "step " << step;
      if (!mirror.empty()) {
        const std::size_t at = below(mirror.size());
        ASSERT_EQ(list[at], mirror[at]) << "step " << step;
        IntList changed = list;
        changed.update(at, [](int& v) { v ^= 0x40000000; });
        ASSERT_FALSE(changed == list) << "step " << step;
        ASSERT_FALSE(rebuilt == changed) << "step " << step;
      }
    }
  }
  for (std::size_t i = 0; i < snapshots.size(); ++i) {
    ASSERT_EQ(snapshots[i].list.toVector(), snapshots[i].items) << "snapshot " << i;
    ASSERT_TRUE(snapshots[i].list == IntList(snapshots[i].items)) << "snapshot " << i;
  }
  expectElements(list, mirror);
  EXPECT_GT(snapshots.size(), 100u);
}

}  // namespace
}  // namespace orvane::core
