// Gains travel in equal steps, one list a step, and arrive at the new list as it stands.
#include "ctl/publication/ramp.h"

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/publication/ramped_publication.h"

namespace tolvane::ctl {
namespace {

using testing::ElementsAre;

std::vector<float> gainsOf(const Routes& routes) {
  std::vector<float> gains;
  for (const PatchConnection& route : routes) gains.push_back(route.gain);
  return gains;
}

/// The gains of the first route in each step until the goal.
std::vector<float> travel(Ramp& ramp) {
  std::vector<float> gains;
  while (const auto step = ramp.next()) gains.push_back(step->empty() ? 0.0F : step->front().gain);
  return gains;
}

TEST(Ramp, IsAtItsGoalAtFirst) {
  Ramp ramp({{0, 0, 0.5F, true}});
  EXPECT_FALSE(ramp.isTravelling());
  EXPECT_EQ(ramp.next(), std::nullopt);
}

TEST(Ramp, TravelsInEqualSteps) {
  Ramp ramp({{0, 0, 1.0F, true}});
  ramp.setGoal({{0, 0, 0.5F, true}}, 4);
  EXPECT_THAT(travel(ramp), ElementsAre(0.875F, 0.75F, 0.625F, 0.5F));
  EXPECT_FALSE(ramp.isTravelling());
}

TEST(Ramp, OneStepIsTheGoalItself) {
  const Routes goal = {{3, 3, 0.5F, true}, {0, 0, -1.0F, false}, {3, 3, 0.25F, true}};
  for (const std::uint32_t steps : {0U, 1U}) {
    Ramp ramp({{0, 0, 1.0F, true}});
    ramp.setGoal(goal, steps);
    EXPECT_EQ(ramp.next(), goal);
    EXPECT_EQ(ramp.next(), std::nullopt);
  }
}

TEST(Ramp, AMutedRouteGoesToSilenceAndComesBack) {
  Ramp ramp({{0, 0, 1.0F, true}});
  const Routes muted = {{0, 0, 1.0F, false}};
  ramp.setGoal(muted, 2);
  EXPECT_EQ(ramp.next(), (Routes{{0, 0, 0.5F, true}}));
  EXPECT_EQ(ramp.next(), muted);
  ramp.setGoal({{0, 0, 1.0F, true}}, 2);
  EXPECT_THAT(travel(ramp), ElementsAre(0.5F, 1.0F));
}

TEST(Ramp, ANewGoalStartsFromWhereTheRouteIs) {
  Ramp ramp({{0, 0, 0.0F, true}});
  ramp.setGoal({{0, 0, 1.0F, true}}, 4);
  EXPECT_THAT(gainsOf(*ramp.next()), ElementsAre(0.25F));
  EXPECT_THAT(gainsOf(*ramp.next()), ElementsAre(0.5F));
  ramp.setGoal({{0, 0, 0.0F, true}}, 2);
  EXPECT_THAT(travel(ramp), ElementsAre(0.25F, 0.0F));
}

TEST(Ramp, ARouteIsNotHeldUpByAnotherOnesNewGoals) {
  Ramp ramp({{0, 0, 0.0F, true}, {1, 1, 0.0F, true}});
  ramp.setGoal({{0, 0, 1.0F, true}, {1, 1, 0.0F, true}}, 4);
  for (int step = 1; step <= 4; ++step) {
    ramp.setGoal({{0, 0, 1.0F, true}, {1, 1, static_cast<float>(step), true}}, 4);
    EXPECT_EQ(ramp.next()->front().gain, 0.25F * static_cast<float>(step));
  }
}

TEST(Ramp, SeveralRoutesOfOnePairTravelAsTheirSum) {
  const Routes goal = {{0, 0, 0.25F, true}, {0, 0, 0.25F, true}};
  Ramp ramp({});
  ramp.setGoal(goal, 2);
  EXPECT_EQ(ramp.next(), (Routes{{0, 0, 0.25F, true}}));
  EXPECT_EQ(ramp.next(), goal);
}

TEST(Ramp, NeverHasMoreThan64RoutesAndAllArrive) {
  Routes before(64);
  Routes after(64);
  for (std::int64_t r = 0; r < 64; ++r) {
    before[static_cast<std::size_t>(r)] = {r, 0, 1.0F, true};
    after[static_cast<std::size_t>(r)] = {r, 1, 1.0F, true};
  }
  Ramp ramp(before);
  ramp.setGoal(after, 5);
  int steps = 0;
  Routes last;
  while (const auto step = ramp.next()) {
    EXPECT_LE(step->size(), 64U);
    // No gain of any pair makes a larger way than a fifth.
    for (const Routes* list : {&before, &after}) {
      for (const PatchConnection& route : *list) {
        const auto in = [&](const Routes& routes) {
          float gain = 0.0F;
          for (const PatchConnection& each : routes)
            if (each.inputChannel == route.inputChannel && each.outputChannel == route.outputChannel)
              gain += each.gain;
          return gain;
        };
        if (steps > 0) {
          EXPECT_LE(std::fabs(in(*step) - in(last)), 0.2F + 1e-6F);
        }
      }
    }
    last = *step;
    ++steps;
  }
  EXPECT_EQ(last, after);
  EXPECT_EQ(steps, 10) << "out, then in";
}

TEST(RampedPublication, PublishesOneStepACycleAndLeavesNoneOut) {
  CycleMarks cycles;
  std::vector<float> published;
  Publication publication(
      cycles, [&](std::span<const PatchConnection> routes) { published.push_back(routes.front().gain); });
  RampedPublication ramped(publication, {{0, 0, 0.0F, true}}, [] { return 4U; });
  ramped.edit({{0, 0, 1.0F, true}}, {});
  for (int poll = 0; poll < 3; ++poll) ramped.poll({});
  EXPECT_THAT(published, ElementsAre(0.25F)) << "until a cycle has begun with it";
  for (int cycle = 0; cycle < 6; ++cycle) {
    { const CycleScope scope(cycles); }
    for (int poll = 0; poll < 3; ++poll) ramped.poll({});
  }
  EXPECT_THAT(published, ElementsAre(0.25F, 0.5F, 0.75F, 1.0F));
  EXPECT_EQ(ramped.due({}), std::nullopt);
}

TEST(RampedPublication, LeavesNoStepOutOfACycleThatReadsItsListLate) {
  CycleMarks cycles;
  float published = 0.0F;
  Publication publication(cycles,
                          [&](std::span<const PatchConnection> routes) { published = routes.front().gain; });
  RampedPublication ramped(publication, {{0, 0, 0.0F, true}}, [] { return 4U; });
  ramped.edit({{0, 0, 1.0F, true}}, {});
  std::vector<float> heard;
  for (int cycle = 0; cycle < 5; ++cycle) {
    {
      const CycleScope scope(cycles);
      ramped.poll({});
      heard.push_back(published);
      ramped.poll({});
    }
    ramped.poll({});
  }
  EXPECT_THAT(heard, ElementsAre(0.25F, 0.5F, 0.75F, 1.0F, 1.0F));
}

TEST(RampedPublication, GoesOnWithoutCyclesButNotIntoOneThatHangs) {
  CycleMarks cycles;
  std::vector<float> published;
  Publication publication(
      cycles, [&](std::span<const PatchConnection> routes) { published.push_back(routes.front().gain); });
  RampedPublication ramped(publication, {{0, 0, 0.0F, true}}, [] { return 4U; });
  Publication::Time now;
  ramped.edit({{0, 0, 1.0F, true}}, now);
  ramped.poll(now += Publication::kLongestWait);
  EXPECT_THAT(published, ElementsAre(0.25F, 0.5F));
  const CycleScope scope(cycles);
  ramped.poll(now += Publication::kLongestWait);
  EXPECT_THAT(published, ElementsAre(0.25F, 0.5F)) << "the cycle may not have read its list yet";
}

TEST(RampedPublication, WithoutARampPublishesEachEditAsItIs) {
  CycleMarks cycles;
  std::vector<Routes> published;
  Publication publication(cycles, [&](std::span<const PatchConnection> routes) {
    published.emplace_back(routes.begin(), routes.end());
  });
  RampedPublication ramped(publication, {});
  const Routes routes = {{0, 0, 1.0F, true}, {0, 0, 1.0F, true}, {1, 0, 1.0F, false}};
  ramped.edit(routes, {});
  EXPECT_THAT(published, ElementsAre(routes));
}

}  // namespace
}  // namespace tolvane::ctl
