// The session manager takes a card's nodes away and gives them back under other identifiers, as when the user
// changes the card's profile and changes it back.
#include "session/session_fixture.h"

namespace tolvane::test {
namespace {

class SessionProfile : public SessionReturn {
 protected:
  void take(const std::string& node) { rig_->client().removeNode(node); }

  void give(std::size_t node) { rig_->client().addNode(sessionNodesOf(kCard)[node]); }

  /// Makes nodes that take the identifiers of those that have just gone.
  void takeIdentifiers() {
    const PipeWireCard visitor{
        .name = "visitor" + std::to_string(++visitors_), .inputs = 4, .outputs = 4, .cardId = 902};
    for (const PipeWireProperties& node : sessionNodesOf(visitor)) rig_->client().addNode(node);
  }

  void expectHeardAgainAfter(const std::string& event) {
    expectHeardAgain(event, [this] { rig_->linkCard(0); });
  }

  int visitors_ = 0;
};

TEST_P(SessionProfile, BothDirectionsTakenAwayAndGivenBack) {
  route();
  const auto idBefore = rig_->client().nodeId("card.sink");
  take("card.source");
  take("card.sink");
  expectSaid(kGone, 1, "the card's loss");
  takeIdentifiers();
  give(0);
  give(1);
  EXPECT_NE(rig_->client().nodeId("card.sink"), idBefore);
  expectSaid(kBack, 1, "the card's return");
  expectHeardAgainAfter("that");
  EXPECT_EQ(messages(), std::string("tolvanectl: routing on card\n") + kGone + kBack);
}

TEST_P(SessionProfile, OneDirectionTakenAwayAndGivenBackIsHeardAgainWithoutAWord) {
  route();
  for (const std::size_t node : {0U, 1U}) {
    take(nodesOf(kCard)[node].at("node.name"));
    takeIdentifiers();
    give(node);
    expectHeardAgainAfter("the return of " + nodesOf(kCard)[node].at("node.name"));
  }
  EXPECT_EQ(messages(), "tolvanectl: routing on card\n");
}

INSTANTIATE_TEST_SUITE_P(Paces, SessionProfile, kSessionPaces, sessionPaceName);

}  // namespace
}  // namespace tolvane::test
