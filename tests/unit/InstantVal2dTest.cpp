#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include "grid/InstantVal2d.h"

using tidora::InstantVal2d;

namespace {

InstantVal2d Snapshot(const std::vector<float>& values) {
    InstantVal2d snapshot;
    snapshot.Reset(values.size());
    for (std::size_t k = 0; k < values.size(); ++k) {
        snapshot.val[k] = values[k];
    }
    return snapshot;
}

std::vector<float> Values(const InstantVal2d& snapshot) {
    return {snapshot.val, snapshot.val + snapshot.num};
}

}  // namespace

TEST_CASE("a new snapshot is empty") {
    const InstantVal2d snapshot;
    CHECK(snapshot.num == 0);
    CHECK(snapshot.val == nullptr);
}

TEST_CASE("a copied snapshot has an array of its own with the same values") {
    InstantVal2d source = Snapshot({1.0F, -2.5F, 3.0F});
    const InstantVal2d copy(source);
    CHECK(copy.num == 3);
    REQUIRE(copy.val != source.val);
    CHECK(Values(copy) == std::vector<float>{1.0F, -2.5F, 3.0F});
    source.val[0] = 9.0F;
    CHECK(copy.val[0] == 1.0F);
}

TEST_CASE("a copy of a snapshot without an array copies nothing and can be written to") {
    InstantVal2d source;
    source.num = 4;
    InstantVal2d copy(source);
    CHECK(copy.num == 4);
    REQUIRE(copy.val != nullptr);
    copy.val[3] = 1.0F;
    CHECK(copy.val[3] == 1.0F);
    CHECK(source.val == nullptr);
}

TEST_CASE("assigning a snapshot duplicates its values and self-assignment changes nothing") {
    InstantVal2d target = Snapshot({7.0F});
    const InstantVal2d source = Snapshot({1.0F, 2.0F});
    target = source;
    CHECK(target.val != source.val);
    CHECK(Values(target) == std::vector<float>{1.0F, 2.0F});
    const InstantVal2d& itself = target;
    target = itself;
    CHECK(Values(target) == std::vector<float>{1.0F, 2.0F});
}

TEST_CASE("a moved snapshot keeps its array and leaves an empty one behind") {
    InstantVal2d source = Snapshot({1.0F, 2.0F});
    const float* const array = source.val;
    const InstantVal2d target(std::move(source));
    CHECK(target.val == array);
    CHECK(target.num == 2);
    CHECK(source.val == nullptr);  // NOLINT(bugprone-use-after-move): the state left behind is what is tested
    CHECK(source.num == 0);
}

TEST_CASE("resetting a snapshot gives zeros and keeps an array of the right size") {
    InstantVal2d snapshot = Snapshot({1.0F, 2.0F, 3.0F});
    const float* const array = snapshot.val;
    snapshot.Reset(3);
    CHECK(snapshot.val == array);
    CHECK(Values(snapshot) == std::vector<float>{0.0F, 0.0F, 0.0F});
    snapshot.Reset(2);
    CHECK(Values(snapshot) == std::vector<float>{0.0F, 0.0F});
    snapshot.Reset(0);
    CHECK(snapshot.num == 0);
    CHECK(snapshot.val != nullptr);
}

TEST_CASE("a cleared snapshot holds a fresh array of no values") {
    InstantVal2d snapshot = Snapshot({1.0F, 2.0F});
    snapshot.Clear();
    CHECK(snapshot.num == 0);
    CHECK(snapshot.val != nullptr);
    snapshot.Clear();
    CHECK(snapshot.num == 0);
}
