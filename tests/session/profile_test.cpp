// The session manager takes a card's nodes away and gives them back under other identifiers, as when the user
// changes the card's profile and changes it back.
#include "session/session_fixture.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;

constexpr const char* kGone = "tolvanectl: card: is gone; waiting for it to come back\n";
constexpr const char* kBack = "tolvanectl: card: is back\n";

class SessionProfile : public SessionTest {
 protected:
  void take(const std::string& node) { rig_->client().removeNode(node); }

  void give(std::size_t node) { rig_->client().addNode(sessionNodesOf(kCard)[node]); }

  /// Makes nodes that take the identifiers of those that have just gone.
  void takeIdentifiers() {
    const PipeWireCard visitor{
        .name = "visitor" + std::to_string(++visitors_), .inputs = 4, .outputs = 4, .cardId = 902};
    for (const PipeWireProperties& node : sessionNodesOf(visitor)) rig_->client().addNode(node);
  }

  void expectHeardAgain() {
    rig_->linkCard(0);
    EXPECT_TRUE(rig_->settleInSession());
  }

  int visitors_ = 0;
};

TEST_F(SessionProfile, BothDirectionsTakenAwayAndGivenBack) {
  route();
  const auto idBefore = rig_->client().nodeId("card.sink");
  take("card.source");
  take("card.sink");
  EXPECT_TRUE(program_->waitForErr(kGone));
  takeIdentifiers();
  give(0);
  give(1);
  EXPECT_NE(rig_->client().nodeId("card.sink"), idBefore);
  EXPECT_TRUE(program_->waitForErr(kBack));
  expectHeardAgain();
  EXPECT_EQ(messages(), std::string("tolvanectl: routing on card\n") + kGone + kBack);
}

TEST_F(SessionProfile, OneDirectionTakenAwayAndGivenBackIsHeardAgainWithoutAWord) {
  route();
  for (const std::size_t node : {0U, 1U}) {
    take(nodesOf(kCard)[node].at("node.name"));
    takeIdentifiers();
    give(node);
    expectHeardAgain();
  }
  EXPECT_EQ(messages(), "tolvanectl: routing on card\n");
}

}  // namespace
}  // namespace tolvane::test
