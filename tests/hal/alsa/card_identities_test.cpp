// Cards of one kind that are plugged in and out beside each other.
#include "hal/alsa/card_identities.h"

#include <gtest/gtest.h>

namespace tolvane::hal::alsa {
namespace {

Card box(int index, const char* id, const char* place, const char* identity) {
  return {index, id, "Box", 0, 0, identity, place};
}

class CardIdentitiesTest : public testing::Test {
 protected:
  std::vector<std::string> kept(std::vector<Card> cards) {
    identities_.keep(cards);
    std::vector<std::string> found;
    for (const Card& card : cards) found.push_back(card.identity);
    return found;
  }
  CardIdentities identities_;
};

using Identities = std::vector<std::string>;

TEST_F(CardIdentitiesTest, ACardKeepsItsOwnWhenItsTwinIsPluggedIn) {
  EXPECT_EQ(kept({box(0, "Box", "port 1", "serial 7")}), Identities{"serial 7"});
  for (int time = 0; time < 2; ++time) {
    EXPECT_EQ(kept({box(0, "Box", "port 1", "at port 1"), box(1, "Box_1", "port 2", "at port 2")}),
              (Identities{"serial 7", "at port 2"}));
  }
  EXPECT_EQ(kept({box(1, "Box_1", "port 2", "serial 7")}), Identities{"at port 2"});
}

TEST_F(CardIdentitiesTest, ACardThatWasUnpluggedHasNone) {
  EXPECT_EQ(kept({box(0, "Box", "port 1", "serial 7")}), Identities{"serial 7"});
  EXPECT_EQ(kept({}), Identities{});
  EXPECT_EQ(kept({box(0, "Box", "port 1", "at port 1")}), Identities{"at port 1"});
}

TEST_F(CardIdentitiesTest, AnotherCardWithTheNumberAndTheNameDoesNotGetIt) {
  EXPECT_EQ(kept({box(0, "Box", "port 1", "serial 7")}), Identities{"serial 7"});
  EXPECT_EQ(kept({box(0, "Box", "port 2", "serial 8")}), Identities{"serial 8"});
  EXPECT_EQ(kept({box(0, "Desk", "port 2", "serial 9")}), Identities{"serial 9"});
}

}  // namespace
}  // namespace tolvane::hal::alsa
