// At most one publication a cycle, the newest one, and never into a buffer that a cycle may read.
#include "ctl/publication/publication.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tolvane::ctl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PublicationTest : public testing::Test {
 protected:
  /// A list that is told by its gain.
  static Routes list(float gain) { return {{0, 0, gain, true}}; }

  void edit(float gain) { publication_.edit(list(gain), now_); }
  void poll() { publication_.poll(now_); }
  void cycle() { const CycleScope scope(cycles_); }
  void cycles(int count) {
    for (int i = 0; i < count; ++i) cycle();
  }

  CycleMarks cycles_;
  std::vector<float> published_;
  Publication publication_{cycles_, [this](std::span<const PatchConnection> routes) {
                             published_.push_back(routes.front().gain);
                           }};
  Publication::Time now_;
};

TEST_F(PublicationTest, TheFirstEditIsPublishedAtOnce) {
  edit(1.0F);
  EXPECT_THAT(published_, ElementsAre(1.0F));
  EXPECT_EQ(publication_.due(now_), std::nullopt);
}

TEST_F(PublicationTest, AnEditAfterACycleIsPublishedAtOnce) {
  edit(1.0F);
  cycle();
  edit(2.0F);
  EXPECT_THAT(published_, ElementsAre(1.0F, 2.0F));
  EXPECT_EQ(publication_.count(), 2U);
}

TEST_F(PublicationTest, OfTheEditsBetweenTwoCyclesTheNewestIsPublished) {
  for (const float gain : {1.0F, 2.0F, 3.0F, 4.0F}) edit(gain);
  EXPECT_THAT(published_, ElementsAre(1.0F));
  EXPECT_EQ(publication_.due(now_), now_ + Publication::kAskAgain);
  poll();
  EXPECT_THAT(published_, ElementsAre(1.0F));
  cycle();
  poll();
  EXPECT_THAT(published_, ElementsAre(1.0F, 4.0F));
  poll();
  EXPECT_THAT(published_, ElementsAre(1.0F, 4.0F)) << "once only";
}

TEST_F(PublicationTest, APublicationDuringACycleWaitsForTheNextOne) {
  cycles_.begin();
  edit(1.0F);  // the running cycle may have read the index before
  edit(2.0F);
  EXPECT_THAT(published_, ElementsAre(1.0F));
  cycles_.end();
  poll();
  EXPECT_THAT(published_, ElementsAre(1.0F)) << "no cycle has begun with it";
  cycles_.begin();
  poll();
  EXPECT_THAT(published_, ElementsAre(1.0F, 2.0F)) << "this cycle reads the other buffer";
  cycles_.end();
}

TEST_F(PublicationTest, AnEditWaitsForTwoCyclesAtMost) {
  for (const bool duringACycle : {false, true}) {
    if (duringACycle) cycles_.begin();
    edit(1.0F);
    edit(2.0F);
    if (duringACycle) cycles_.end();
    cycles(duringACycle ? 1 : 2);
    poll();
    EXPECT_EQ(published_.back(), 2.0F);
    cycles(2);
  }
}

TEST_F(PublicationTest, WithoutCyclesTheNewestEditIsPublishedAfterAWhile) {
  edit(1.0F);
  edit(2.0F);
  now_ += Publication::kLongestWait - std::chrono::milliseconds(1);
  poll();
  EXPECT_THAT(published_, ElementsAre(1.0F));
  now_ += std::chrono::milliseconds(1);
  poll();
  EXPECT_THAT(published_, ElementsAre(1.0F, 2.0F));
}

TEST_F(PublicationTest, ACycleThatHangsIsWaitedFor) {
  cycles_.begin();
  edit(1.0F);
  edit(2.0F);
  now_ += 100 * Publication::kLongestWait;
  poll();
  EXPECT_THAT(published_, ElementsAre(1.0F)) << "the cycle may be reading the other buffer";
  cycles_.end();
  poll();
  EXPECT_THAT(published_, ElementsAre(1.0F, 2.0F));
}

TEST_F(PublicationTest, NothingIsPublishedThatNobodyEdited) {
  cycles(3);
  poll();
  EXPECT_THAT(published_, IsEmpty());
  EXPECT_EQ(publication_.count(), 0U);
}

}  // namespace
}  // namespace tolvane::ctl
