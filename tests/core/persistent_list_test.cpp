// PersistentList: value semantics for copies, chunk splits, equality of lists
// whose chunk boundaries differ, storage sharing, and a seeded randomized
// mirror against std::vector that covers edits anywhere, in range or not.

#include "core/persistent_list.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

namespace orvane::core {
namespace {

using IntList = PersistentList<int>;

std::vector<int> iota(int n) {
  std::vector<int> v(static_cast<std::size_t>(n));
  std::iota(v.begin(), v.end(), 0);
  return v;
}

std::ptrdiff_t at(std::size_t i) { return static_cast<std::ptrdiff_t>(i); }

// Compares the list with the expected elements by iteration and by index.
void expectElements(const IntList& list, const std::vector<int>& expected) {
  ASSERT_EQ(list.size(), expected.size());
  EXPECT_EQ(std::vector<int>(list.begin(), list.end()), expected);
  std::vector<int> indexed;
  for (std::size_t k = 0; k < list.size(); ++k) indexed.push_back(list[k]);
  EXPECT_EQ(indexed, expected);
}

// A value that counts its copies, to see what an edit costs.
struct Counted {
  static inline int copies = 0;
  int value = 0;
  explicit Counted(int v) : value(v) {}
  Counted(const Counted& o) : value(o.value) { ++copies; }
  friend bool operator==(const Counted& a, const Counted& b) { return a.value == b.value; }
};

TEST(PersistentListTest, EmptiedListEqualsANewOne) {
  EXPECT_EQ(IntList(), IntList(std::vector<int>{}));
  EXPECT_NE(IntList(), IntList{0});
  for (int n : {1, 100}) {
    SCOPED_TRACE(n);
    IntList list(iota(n));
    // Alternate between the front and the back, across whole chunks.
    for (int k = 0; k < n; ++k) list.erase(k % 2 == 0 ? 0 : list.size() - 1);
    EXPECT_TRUE(list.empty() && list.begin() == list.end());
    EXPECT_TRUE(list == IntList() && IntList() == list);
    EXPECT_EQ(hashValue(list), hashValue(IntList()));
    list.insert(0, 2);
    list.insert(0, 1);
    list.push_back(3);
    EXPECT_EQ(list, (IntList{1, 2, 3}));
  }
}

TEST(PersistentListTest, ChangingACopyCopiesOnlyTheChangedElements) {
  Counted::copies = 0;
  PersistentList<Counted> a;
  for (int k = 0; k < 1000; ++k) a.push_back(Counted(k));
  const int afterBuild = Counted::copies;
  PersistentList<Counted> b = a;
  b.update(500, [](Counted& c) { c.value = -1; });
  EXPECT_EQ(Counted::copies, afterBuild + 1);
  EXPECT_EQ(a[500].value, 500);
  EXPECT_EQ(&a[499], &b[499]);  // untouched elements are the very same objects
  // An element this list alone holds is changed where it is.
  const Counted* where = &b[500];
  b.update(500, [](Counted& c) { c.value = -2; });
  EXPECT_EQ(&b[500], where);
  // updateWhere visits matches in order and copies just those ten.
  PersistentList<Counted> c = a;
  std::vector<int> seen;
  c.updateWhere([](const Counted& x) { return x.value % 100 == 0; },
                [&](Counted& x) { seen.push_back(x.value++); });
  EXPECT_EQ(Counted::copies, afterBuild + 11);
  EXPECT_EQ(seen, (std::vector<int>{0, 100, 200, 300, 400, 500, 600, 700, 800, 900}));
  EXPECT_EQ(&a[1], &c[1]);
  EXPECT_EQ(c[100].value, 101);
  EXPECT_EQ(a[100].value, 100);
  // Without a match nothing is copied, not even the root.
  const PersistentList<Counted> before = c;
  c.updateWhere([](const Counted& x) { return x.value < 0; }, [](Counted& x) { x.value = 0; });
  EXPECT_TRUE(c.sharesStorageWith(before));
}

TEST(PersistentListTest, EqualityIgnoresChunkBoundariesButNotOneElement) {
  const std::vector<int> values = iota(300);
  const IntList built(values);  // chunks of 32; a chunk splits beyond 64
  IntList appended, prepended, middle(iota(100));
  for (int v : values) appended.push_back(v);
  for (auto it = values.rbegin(); it != values.rend(); ++it) prepended.insert(0, *it);
  for (int v = 200; v < 300; ++v) middle.push_back(v);
  for (int v = 199; v >= 100; --v) middle.insert(100, v);
  expectElements(built, values);
  for (const IntList* x : {&appended, &prepended, &middle}) {
    expectElements(*x, values);
    EXPECT_TRUE(*x == built && built == *x);
    EXPECT_EQ(hashValue(*x), hashValue(built));
  }
  for (std::size_t i : {0u, 31u, 32u, 100u, 299u}) {
    SCOPED_TRACE(i);
    IntList changed = middle, sibling = built;  // sibling shares all other chunks
    changed.set(i, -1);
    sibling.set(i, -1);
    EXPECT_FALSE(built == changed || changed == built);
    EXPECT_FALSE(built == sibling || sibling == built);
    EXPECT_TRUE(changed == sibling);
  }
  EXPECT_NE(IntList(iota(32)), IntList(iota(33)));
  EXPECT_NE(hashValue(IntList{1, 2, 3}), hashValue(IntList{3, 2, 1}));
}

TEST(PersistentListTest, SharedChunksAtDifferentOffsetsAreComparedElementByElement) {
  // Three built chunks of 32. Values repeat with period 5 except at 40, so
  // that shifting by 5 changes the list only there.
  std::vector<int> values(96);
  for (std::size_t i = 0; i < 96; ++i) values[i] = static_cast<int>(i % 5);
  values[40] = 99;
  const IntList base(values);
  // Both keep the middle chunk shared, one of them 5 places later.
  IntList front = base, back = base;
  for (int k = 0; k < 5; ++k) front.insert(static_cast<std::size_t>(k), k);
  for (int k = 91; k < 96; ++k) back.push_back(values[static_cast<std::size_t>(k)]);
  std::vector<int> frontValues = {0, 1, 2, 3, 4};
  frontValues.insert(frontValues.end(), values.begin(), values.end());
  std::vector<int> backValues = values;
  backValues.insert(backValues.end(), values.begin() + 91, values.end());
  ASSERT_NE(frontValues, backValues);  // they differ at 40 and 45 only
  EXPECT_FALSE(front == back || back == front);
  EXPECT_EQ(front, IntList(frontValues));
  EXPECT_EQ(back, IntList(backValues));
  // Without the odd value the two are equal, shared chunk and all.
  front.set(45, 0);
  back.set(40, 0);
  EXPECT_TRUE(front == back && back == front);
}

// Mirrors a list against a std::vector over thousands of random edits, out of
// range ones included, keeping snapshots to check that copies never change.
TEST(PersistentListTest, RandomEditsMatchAVector) {
  std::mt19937 rng(20240611);
  auto below = [&](std::size_t n) {
    return std::uniform_int_distribution<std::size_t>(0, n == 0 ? 0 : n - 1)(rng);
  };
  IntList list;
  std::vector<int> mirror;
  std::vector<std::pair<IntList, std::vector<int>>> snapshots;
  int next = 0;
  for (int step = 0; step < 6000; ++step) {
    const std::size_t op = below(100), i = below(mirror.size() + 2);
    if (op < 38) {  // insert anywhere or past the end, now and then 20 in one spot
      for (int k = op < 8 ? 20 : 1; k > 0; --k, ++next) {
        list.insert(i, next);
        mirror.insert(mirror.begin() + at(std::min(i, mirror.size())), next);
      }
    } else if (op < 43) {
      list.push_back(next);
      mirror.push_back(next++);
    } else if (op < 65) {
      list.erase(i);
      if (i < mirror.size()) mirror.erase(mirror.begin() + at(i));
    } else if (op < 75) {
      list.set(i, -next);
      if (i < mirror.size()) mirror[i] = -next;
      ++next;
    } else if (op < 85) {
      auto change = [](int& v) { v = (v * 3 + 1) % 1000003; };
      list.update(i, change);
      if (i < mirror.size()) change(mirror[i]);
    } else if (op < 89) {
      const int m = static_cast<int>(below(7)) + 2, r = static_cast<int>(below(static_cast<std::size_t>(m)));
      auto pred = [m, r](int v) { return ((v % m) + m) % m == r; };
      list.updateWhere(pred, [](int& v) { v += 5; });
      for (int& v : mirror)
        if (pred(v)) v += 5;
    } else if (op < 97) {
      snapshots.emplace_back(list, mirror);
      EXPECT_TRUE(snapshots.back().first.sharesStorageWith(list));
    } else if (op < 98) {
      list.clear();
      mirror.clear();
    } else if (!snapshots.empty()) {  // continue from an older snapshot
      std::tie(list, mirror) = snapshots[below(snapshots.size())];
    }

    ASSERT_EQ(list.size(), mirror.size()) << "step " << step;
    if (step % 10 != 0 && mirror.size() >= 5) continue;
    ASSERT_EQ(list.toVector(), mirror) << "step " << step;
    const IntList rebuilt(mirror);
    ASSERT_TRUE(list == rebuilt && rebuilt == list) << "step " << step;
    ASSERT_EQ(hashValue(list), hashValue(rebuilt)) << "step " << step;
    if (mirror.empty()) continue;
    const std::size_t j = below(mirror.size());
    ASSERT_EQ(list[j], mirror[j]) << "step " << step;
    const auto first = std::find(mirror.begin(), mirror.end(), mirror[j]) - mirror.begin();
    ASSERT_EQ(list.indexWhere([&](int v) { return v == mirror[j]; }),
              static_cast<std::size_t>(first)) << "step " << step;
    IntList changed = list;
    changed.update(j, [](int& v) { v ^= 0x40000000; });
    ASSERT_FALSE(changed == list || rebuilt == changed) << "step " << step;
  }
  for (const auto& [snapshot, items] : snapshots) ASSERT_EQ(snapshot.toVector(), items);
  expectElements(list, mirror);
  EXPECT_GT(snapshots.size(), 100u);
}

}  // namespace
}  // namespace orvane::core
