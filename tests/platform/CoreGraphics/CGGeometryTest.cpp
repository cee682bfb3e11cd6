#include "CoreGraphics/CGGeometry.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace ios;

namespace {
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
}

TEST(CGAffineTransform, AppliesTheFirstOperationFirst) {
  const auto move = CGAffineTransformMakeTranslation(10, 20);
  const auto grow = CGAffineTransformMakeScale(2, 3);
  const auto turn = CGAffineTransformMakeRotation(std::acos(-1.0) / 2);
  struct Row {
    const char* name;
    CGAffineTransform first, second;
    CGPoint expected;  // of (1, 2)
  };
  for (const Row& row :
       {Row{"move then grow", move, grow, {22, 66}}, Row{"grow then move", grow, move, {12, 26}},
        Row{"move then turn", move, turn, {-22, 11}}, Row{"turn then move", turn, move, {8, 21}}}) {
    SCOPED_TRACE(row.name);
    const auto both = CGAffineTransformConcat(row.first, row.second);
    const CGPoint there = CGPointApplyAffineTransform({1, 2}, both);
    EXPECT_NEAR(row.expected.x, there.x, 1e-9);
    EXPECT_NEAR(row.expected.y, there.y, 1e-9);
    const CGPoint back = CGPointApplyAffineTransform(there, CGAffineTransformInvert(both));
    EXPECT_NEAR(1, back.x, 1e-9);
    EXPECT_NEAR(2, back.y, 1e-9);
  }
  const auto flat = CGAffineTransformMakeScale(0, 5);
  EXPECT_EQ(flat, CGAffineTransformInvert(flat));
}

TEST(CGRect, SharesAnAreaOnlyWhereThereIsOne) {
  const CGRect unit = CGRectMake(0, 0, 10, 10);
  struct Row {
    const char* name;
    CGRect other, shared;
  };
  for (const Row& row :
       {Row{"overlap", {{5, 6}, {10, 10}}, {{5, 6}, {5, 4}}},
        Row{"inside", {{2, 2}, {3, 3}}, {{2, 2}, {3, 3}}},
        Row{"touching edges", {{10, 0}, {5, 5}}, CGRectZero}, Row{"apart", {{20, 20}, {5, 5}}, CGRectZero},
        Row{"empty", {{5, 5}, {0, 5}}, CGRectZero}, Row{"no number", {{5, 5}, {kNaN, 5}}, CGRectZero}}) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.shared, CGRectIntersection(unit, row.other));
    EXPECT_EQ(row.shared, CGRectIntersection(row.other, unit));
    EXPECT_EQ(row.shared != CGRectZero, CGRectIntersectsRect(unit, row.other));
  }
  EXPECT_EQ(CGRectZero, CGRectInset(unit, 6, 0));
  EXPECT_EQ(CGRectMake(1, 2, 8, 6), CGRectInset(unit, 1, 2));
}
