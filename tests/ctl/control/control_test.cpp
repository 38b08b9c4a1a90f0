// The model: what each command changes, answers and tells, and what undo, scenes and saves do.
#include "ctl/control/control.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ctl/support/files.h"
#include "support/eventually.h"

namespace tolvane::ctl::control {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr RouteKey kFirst{0, 1};
constexpr RouteKey kOther{2, 3};

class ControlTest : public testing::Test, public Listener {
 protected:
  ControlTest() {
    test::writePatch(path_, {{0, 1, 0.5F, true}, {1, 1, -1.0F, false}});
    ::mkdir(scenes_.c_str(), 0700);
    patch_ = std::make_unique<PatchSource>(path_);
    const PatchResult routes = patch_->load();
    control_ = std::make_unique<Control>(config(), *patch_, routes.value(), nullptr);
    control_->add(*this);
  }
  ~ControlTest() override { control_->remove(*this); }

  void tell(const Event& event) override {
    if (const auto* changed = std::get_if<RoutesChanged>(&event)) changes_.push_back(*changed);
    if (const auto* status = std::get_if<StatusChanged>(&event)) statuses_.push_back(status->status);
  }
  [[nodiscard]] bool wantsChanges() const override { return true; }
  [[nodiscard]] bool wantsMeters() const override { return wantsMeters_; }

  Control::Config config() {
    Control::Config config;
    config.sceneFolder = scenes_;
    config.inputLabels = {"Vox", "", "", ""};
    config.outputLabels.resize(4);
    config.device = [] { return DeviceStatus{.name = "Box", .isAlive = true}; };
    return config;
  }

  Answer ask(const Command& command, std::uint64_t gesture = 0) {
    std::optional<Answer> answer;
    control_->execute(command, {1, gesture}, [&](const Answer& its) { answer = its; });
    EXPECT_TRUE(test::eventually([&] {
      control_->tick({});
      return answer.has_value();
    }));
    return answer.value_or(Refusal{"no answer"});
  }
  std::string refusal(const Command& command) {
    const Serial before = control_->serial();
    const Routes routes = control_->routes();
    const Answer answer = ask(command);
    EXPECT_EQ(control_->serial(), before);
    EXPECT_EQ(control_->routes(), routes);
    const auto* refused = std::get_if<Refusal>(&answer);
    return refused != nullptr ? refused->text : "no refusal";
  }
  float gain(std::size_t route = 0) { return control_->routes()[route].gain; }

  test::TemporaryFolder folder_;
  std::string path_ = folder_ / "patch.json";
  std::string scenes_ = folder_ / "scenes";
  std::unique_ptr<PatchSource> patch_;
  std::unique_ptr<Control> control_;
  std::vector<RoutesChanged> changes_;
  std::vector<Status> statuses_;
  bool wantsMeters_ = false;
};

TEST_F(ControlTest, SetsTheGainOfARoute) {
  EXPECT_EQ(ask(SetRoute{kFirst, 0.25F}), Answer(Done{1}));
  EXPECT_EQ(gain(), 0.25F);
  EXPECT_THAT(changes_, ElementsAre(RoutesChanged{1, Cause::edit, {{kFirst, 0.25F, true, ""}}, {}}));
  EXPECT_TRUE(control_->takeUnpublished());
  EXPECT_FALSE(control_->takeUnpublished());
}

TEST_F(ControlTest, AddsARouteThatIsNotThere) {
  EXPECT_EQ(ask(SetRoute{kOther, 2.0F}), Answer(Done{1}));
  EXPECT_EQ(control_->routes().back(), (PatchConnection{2, 3, 2.0F, true}));
  EXPECT_THAT(changes_, ElementsAre(RoutesChanged{1, Cause::edit, {{kOther, 2.0F, true, ""}}, {}}));
}

TEST_F(ControlTest, AddsNoRouteThatTheDeviceLacks) {
  EXPECT_EQ(refusal(SetRoute{{4, 0}, 1.0F}), "there is no input 5; the device has 4");
  EXPECT_EQ(refusal(SetRoute{{0, 99}, 1.0F}), "there is no output 100; the device has 4");
  EXPECT_EQ(refusal(SetRoute{{-1, 0}, 1.0F}), "there is no input 0; the device has 4");
}

TEST_F(ControlTest, TakesLevelsInDecibelsAndKeepsTheSign) {
  ask(SetGain{kFirst, -6.0});
  EXPECT_FLOAT_EQ(gain(), 0.501187234F);
  ask(SetGain{{1, 1}, 20.0});
  EXPECT_EQ(gain(1), -10.0F);
  ask(SetGain{kFirst, -std::numeric_limits<double>::infinity()});
  EXPECT_EQ(gain(), 0.0F);
}

TEST_F(ControlTest, RefusesGainsThatAreNone) {
  EXPECT_THAT(refusal(SetGain{kFirst, std::numeric_limits<double>::quiet_NaN()}), HasSubstr("decibels"));
  EXPECT_THAT(refusal(SetGain{kFirst, 1e9}), HasSubstr("decibels"));
  EXPECT_THAT(refusal(SetRoute{kFirst, std::numeric_limits<float>::infinity()}), HasSubstr("finite"));
  EXPECT_THAT(refusal(SetRoute{kFirst, std::numeric_limits<float>::quiet_NaN()}), HasSubstr("finite"));
}

TEST_F(ControlTest, MutesLabelsAndRemoves) {
  ask(SetMute{kFirst, true});
  EXPECT_FALSE(control_->routes()[0].active);
  ask(SetMute{kFirst, false});
  EXPECT_TRUE(control_->routes()[0].active);
  ask(SetLabel{kFirst, "Caf\xC3\xA9"});
  EXPECT_EQ(changes_.back().routes, (std::vector<RouteState>{{kFirst, 0.5F, true, "Caf\xC3\xA9"}}));
  EXPECT_EQ(ask(RemoveRoute{kFirst}), Answer(Done{4}));
  EXPECT_EQ(changes_.back(), (RoutesChanged{4, Cause::edit, {}, {kFirst}}));
  EXPECT_EQ(control_->routes().size(), 1U);
}

TEST_F(ControlTest, RefusesRoutesThatAreNotThere) {
  const std::string none = "there is no route from input 3 to output 4";
  EXPECT_EQ(refusal(SetGain{kOther, 0.0}), none);
  EXPECT_EQ(refusal(SetMute{kOther, true}), none);
  EXPECT_EQ(refusal(SetLabel{kOther, "x"}), none);
  EXPECT_EQ(refusal(RemoveRoute{kOther}), none);
  EXPECT_THAT(refusal(SetLabel{kFirst, "a\nb"}), HasSubstr("control characters"));
  EXPECT_THAT(refusal(SetLabel{kFirst, "\xFF"}), HasSubstr("UTF-8"));
  EXPECT_THAT(refusal(SetLabel{kFirst, std::string(201, 'x')}), HasSubstr("200"));
  EXPECT_THAT(changes_, IsEmpty());
}

TEST_F(ControlTest, WhatChangesNothingHasNoNumberOfItsOwn) {
  EXPECT_EQ(ask(SetRoute{kFirst, 0.5F}), Answer(Done{0}));
  EXPECT_EQ(ask(SetMute{kFirst, false}), Answer(Done{0}));
  EXPECT_THAT(changes_, IsEmpty());
  EXPECT_THAT(refusal(Undo{}), HasSubstr("nothing to undo"));
}

TEST_F(ControlTest, AllRoutesOfAPairChangeTogether) {
  test::writePatch(path_, {{0, 0, 1.0F, true}, {1, 0, 1.0F, true}, {0, 0, 2.0F, true}});
  control_->takeOver(patch_->reload().value());
  ask(SetMute{{0, 0}, true});
  EXPECT_EQ(changes_.back().routes.size(), 2U);
  ask(RemoveRoute{{0, 0}});
  EXPECT_EQ(control_->routes(), (Routes{{1, 0, 1.0F, true}}));
  ask(Undo{});
  EXPECT_EQ(control_->routes(), (Routes{{0, 0, 1.0F, false}, {1, 0, 1.0F, true}, {0, 0, 2.0F, false}}));
}

TEST_F(ControlTest, UndoAndRedoGoThroughAllSteps) {
  constexpr int kSteps = 150;
  const Routes first = control_->routes();
  std::vector<Routes> lists = {first};
  for (int step = 1; step <= kSteps; ++step) {
    ask(step % 3 == 0 ? Command(SetRoute{{step % 4, 3}, 1.0F / static_cast<float>(step)})
                      : Command(SetRoute{kFirst, static_cast<float>(step)}));
    lists.push_back(control_->routes());
  }
  for (int step = kSteps; step-- > 0;) {
    ask(Undo{});
    ASSERT_EQ(control_->routes(), lists[static_cast<std::size_t>(step)]);
  }
  EXPECT_EQ(refusal(Undo{}), "there is nothing to undo");
  for (int step = 1; step <= kSteps; ++step) {
    ask(Redo{});
    ASSERT_EQ(control_->routes(), lists[static_cast<std::size_t>(step)]);
  }
  EXPECT_EQ(refusal(Redo{}), "there is nothing to redo");
  EXPECT_EQ(changes_.back().cause, Cause::redo);
  EXPECT_EQ(control_->serial(), 3U * kSteps);
}

TEST_F(ControlTest, TheOldestStepsAreForgotten) {
  for (int step = 0; step < 1000; ++step) ask(SetRoute{kFirst, static_cast<float>(step) + 2.0F});
  EXPECT_EQ(control_->status().undoSteps, History::kMostSteps);
  EXPECT_GE(History::kMostSteps, 100U);
}

TEST_F(ControlTest, TheAnswerComesBeforeTheEvent) {
  test::writePatch(scenes_ + "/Verse.json", {});
  std::size_t told = 0;
  for (const Command& command :
       {Command(SetRoute{kFirst, 0.1F}), Command(Undo{}), Command(Redo{}), Command(RecallScene{"Verse"})}) {
    std::size_t toldAtAnswer = 99;
    control_->execute(command, {}, [&](const Answer& answer) {
      EXPECT_EQ(answer, Answer(Done{told + 1}));
      toldAtAnswer = changes_.size();
    });
    EXPECT_EQ(toldAtAnswer, told) << nameOf(command);
    EXPECT_EQ(changes_.size(), ++told);
  }
}

TEST_F(ControlTest, AChangeEndsWhatCouldBeRedone) {
  ask(SetRoute{kFirst, 0.1F});
  ask(Undo{});
  ask(SetRoute{kFirst, 0.2F});
  EXPECT_EQ(refusal(Redo{}), "there is nothing to redo");
}

TEST_F(ControlTest, AGestureIsOneStepButEveryChangeIsTold) {
  for (const float gain : {0.4F, 0.3F, 0.2F}) ask(SetRoute{kFirst, gain}, 7);
  ask(SetRoute{kFirst, 0.1F}, 8);
  EXPECT_EQ(changes_.size(), 4U);
  EXPECT_EQ(control_->status().undoSteps, 2U);
  ask(Undo{});
  EXPECT_EQ(gain(), 0.2F);
  ask(Undo{});
  EXPECT_EQ(gain(), 0.5F);
  ask(Redo{});
  EXPECT_EQ(gain(), 0.2F);
}

TEST_F(ControlTest, ALongGestureOfSeveralRoutesIsOneStep) {
  const Routes before = control_->routes();
  for (int change = 1; change <= 5000; ++change) {
    const Control::Bundle bundle(*control_);
    ask(SetRoute{kFirst, static_cast<float>(change)}, 7);
    ask(SetMute{{1, 1}, change % 2 == 0}, 7);
  }
  const Routes after = control_->routes();
  EXPECT_EQ(control_->status().undoSteps, 1U);
  ask(Undo{});
  EXPECT_EQ(control_->routes(), before);
  ask(Redo{});
  EXPECT_EQ(control_->routes(), after);
}

TEST_F(ControlTest, AGestureThatNeverEndsIsSeveralSteps) {
  for (int change = 0; change < 10'000; ++change)
    ask(change % 2 == 0 ? Command(SetRoute{kOther, 1.0F}) : Command(RemoveRoute{kOther}), 7);
  EXPECT_GT(control_->status().undoSteps, 1U) << "or a step could take all memory";
  const std::uint64_t steps = control_->status().undoSteps;
  for (std::uint64_t step = 0; step < steps; ++step) ask(Undo{});
  EXPECT_EQ(control_->routes(), (Routes{{0, 1, 0.5F, true}, {1, 1, -1.0F, false}}));
}

TEST_F(ControlTest, ABundleIsOneChange) {
  {
    const Control::Bundle bundle(*control_);
    EXPECT_EQ(ask(SetRoute{kOther, 1.0F}), Answer(Done{1}));
    EXPECT_EQ(ask(SetMute{kFirst, true}), Answer(Done{1}));
    EXPECT_TRUE(std::holds_alternative<Refusal>(ask(RemoveRoute{{3, 3}})));
    EXPECT_FALSE(control_->takeUnpublished());
  }
  EXPECT_TRUE(control_->takeUnpublished());
  ASSERT_EQ(changes_.size(), 1U);
  EXPECT_EQ(changes_[0].routes.size(), 2U);
  ask(Undo{});
  EXPECT_EQ(control_->routes(), (Routes{{0, 1, 0.5F, true}, {1, 1, -1.0F, false}}));
}

TEST_F(ControlTest, AllAnswersWithinABundleHaveTheNumberOfItsChange) {
  const Control::Bundle bundle(*control_);
  EXPECT_EQ(ask(ResetClips{}), Answer(Done{0}));
  ask(SetRoute{kOther, 1.0F});
  for (const Command& command :
       {Command(ResetClips{}), Command(Subscribe{}), Command(Save{}), Command(SaveScene{"Verse"})})
    EXPECT_EQ(ask(command), Answer(Done{1})) << nameOf(command);
  EXPECT_EQ(std::get<Status>(ask(GetStatus{})).serial, 1U);
  EXPECT_EQ(std::get<RouteDump>(ask(Dump{})).serial, 1U);
}

TEST_F(ControlTest, AnUndoWithinABundleIsAChangeOfItsOwn) {
  {
    const Control::Bundle bundle(*control_);
    ask(SetRoute{kFirst, 0.1F});
    EXPECT_EQ(ask(Undo{}), Answer(Done{2}));
    EXPECT_EQ(ask(SetRoute{kFirst, 0.3F}), Answer(Done{3}));
  }
  EXPECT_EQ(changes_.size(), 3U);
  EXPECT_EQ(gain(), 0.3F);
}

TEST_F(ControlTest, AScenesRoutesReplaceAll) {
  test::writePatch(scenes_ + "/Verse.json", {{2, 3, 0.25F, true}});
  EXPECT_EQ(ask(RecallScene{"Verse"}), Answer(Done{1}));
  EXPECT_EQ(control_->routes(), (Routes{{2, 3, 0.25F, true}}));
  EXPECT_THAT(changes_, ElementsAre(RoutesChanged{
                            1, Cause::scene, {{kOther, 0.25F, true, ""}}, {kFirst, RouteKey{1, 1}}}));
  EXPECT_EQ(control_->status().scene, "Verse");
  ask(Undo{});
  EXPECT_EQ(gain(), 0.5F);
}

TEST_F(ControlTest, ScenesAreListedByNumberThenName) {
  for (const char* name : {"10 Outro", "2 Verse", "Encore", "1 Intro", "bad\x01", ".hidden", "\xFF"})
    test::writePatch(scenes_ + "/" + name + ".json", {{0, 0, 1.0F, true}});
  test::writeText(scenes_ + "/notes.txt", "");
  ::mkdir((scenes_ + "/folder.json").c_str(), 0700);
  EXPECT_EQ(ask(ListScenes{}), Answer(SceneList{{"1 Intro", "2 Verse", "10 Outro", "Encore"}}));
  ask(RecallScene{std::int64_t{3}});
  EXPECT_EQ(control_->status().scene, "10 Outro");
  EXPECT_EQ(refusal(RecallScene{std::int64_t{5}}), "there is no scene 5; there are 4");
  EXPECT_EQ(refusal(RecallScene{std::int64_t{0}}), "there is no scene 0; there are 4");
}

TEST_F(ControlTest, ABadSceneIsRefused) {
  test::writeText(scenes_ + "/Torn.json", "[{\"inputChannel\":0");
  test::writeText(scenes_ + "/Huge.json", std::string((std::size_t{1} << 20U) + 1, ' '));
  ::mkfifo((scenes_ + "/Pipe.json").c_str(), 0600);
  EXPECT_THAT(refusal(RecallScene{"Torn"}), HasSubstr("Torn.json: "));
  EXPECT_THAT(refusal(RecallScene{"Huge"}), HasSubstr("larger than 1 MiB"));
  EXPECT_THAT(refusal(RecallScene{"Pipe"}), HasSubstr("not a regular file"));
  EXPECT_EQ(refusal(RecallScene{"Nothing"}), "there is no scene \"Nothing\"");
  for (const char* name : {"../patch", "a/b", ".hidden", "", "a\nb", "\xFF"})
    EXPECT_THAT(refusal(RecallScene{name}), HasSubstr("the name of a scene")) << name;
  EXPECT_THAT(refusal(SaveScene{"../patch"}), HasSubstr("the name of a scene"));
}

TEST_F(ControlTest, SavesAScene) {
  ask(SetLabel{kFirst, "Vox"});
  EXPECT_EQ(ask(SaveScene{"1 Intro"}), Answer(Done{1}));
  EXPECT_EQ(test::readBytes(scenes_ + "/1 Intro.json"),
            R"([{"inputChannel":0,"outputChannel":1,"gain":0.5,"active":true,"label":"Vox"},)"
            R"({"inputChannel":1,"outputChannel":1,"gain":-1.0,"active":false}])");
  ask(RemoveRoute{kFirst});
  ask(RecallScene{"1 Intro"});
  EXPECT_EQ(changes_.back().routes.front().label, "Vox");
}

TEST_F(ControlTest, ASceneThatIsBeingSavedIsRecalledAsItWillBe) {
  test::writePatch(scenes_ + "/Verse.json", {{0, 1, 0.75F, true}});
  int answers = 0;
  const auto execute = [&](const Command& command) {
    control_->execute(command, {}, [&](const Answer& its) {
      EXPECT_FALSE(std::holds_alternative<Refusal>(its)) << nameOf(command);
      ++answers;
    });
  };
  for (const char* name : {"Verse", "Bridge"}) {
    execute(SetRoute{kFirst, 0.1F});
    execute(SaveScene{name});
    execute(SetRoute{kFirst, 0.2F});
    execute(RecallScene{name});
    EXPECT_EQ(gain(), 0.1F) << name;
  }
  EXPECT_EQ(answers, 6) << "neither is on the disk";
  EXPECT_EQ(ask(ListScenes{}), Answer(SceneList{{"Bridge", "Verse"}}));
  EXPECT_TRUE(test::eventually([&] {
    control_->tick({});
    return answers == 8;
  }));
  EXPECT_THAT(test::readBytes(scenes_ + "/Verse.json"), HasSubstr("0.1"));
}

TEST_F(ControlTest, TheSceneIsTheOneRecalledLastAlsoIfASaveEndsLater) {
  test::writePatch(scenes_ + "/B.json", {{0, 1, 0.25F, true}});
  std::optional<Answer> saved;
  control_->execute(SaveScene{"A"}, {}, [&](const Answer& its) { saved = its; });
  control_->execute(RecallScene{"B"}, {}, [](const Answer& its) { EXPECT_EQ(its, Answer(Done{1})); });
  EXPECT_TRUE(test::eventually([&] {
    control_->tick({});
    return saved.has_value();
  }));
  EXPECT_EQ(control_->status().scene, "B");
  ask(SaveScene{"A"});
  EXPECT_EQ(control_->status().scene, "A");
}

TEST_F(ControlTest, SavesNoSceneThatCouldNotBeRecalled) {
  test::writePatch(path_, Routes(20'000, {0, 0, 0.5F, true}));
  control_->takeOver(patch_->reload().value());
  EXPECT_THAT(refusal(SaveScene{"Big"}), HasSubstr("Big.json: would be larger than 1 MiB"));
  EXPECT_EQ(ask(ListScenes{}), Answer(SceneList{}));
}

TEST_F(ControlTest, SavesThePatchWithWhatIsNotOurs) {
  test::writeText(
      path_, "[ {\"x\": [1, 2],\n\"inputChannel\":0,\"outputChannel\":1,\"gain\":0.50,\"active\":true} ]\n");
  control_->takeOver(patch_->reload().value());
  EXPECT_TRUE(control_->status().isSaved);
  ask(SetMute{kFirst, true});
  EXPECT_FALSE(control_->status().isSaved);
  const Serial serial = control_->serial();
  EXPECT_EQ(ask(Save{}), Answer(Done{serial}));
  EXPECT_EQ(test::readBytes(path_),
            "[ {\"x\": [1, 2],\n\"inputChannel\":0,\"outputChannel\":1,\"gain\":0.50,\"active\":false} ]\n");
  EXPECT_TRUE(control_->status().isSaved);
  EXPECT_FALSE(patch_->loadIfChanged()) << "what was saved is no change of the file";
}

TEST_F(ControlTest, SavedMeansThatTheFileHasTheseRoutes) {
  ask(SetRoute{kFirst, 0.1F});
  EXPECT_FALSE(control_->status().isSaved);
  ask(Undo{});
  EXPECT_TRUE(control_->status().isSaved) << "the file has them again";
  {
    const Control::Bundle bundle(*control_);
    ask(SetRoute{kFirst, 0.2F});
    ask(Save{});
    ask(SetRoute{kFirst, 0.3F});
  }
  EXPECT_FALSE(control_->status().isSaved) << "the file has the bundle's first change only";
}

TEST_F(ControlTest, DoesNotSaveOverAFileThatHasChanged) {
  ask(SetMute{kFirst, true});
  test::writeText(path_, "[]");
  EXPECT_THAT(refusal(Save{}), HasSubstr("has changed since it was read"));
  EXPECT_EQ(test::readBytes(path_), "[]");
  control_->takeOver(patch_->reload().value());
  EXPECT_EQ(changes_.back().cause, Cause::file);
  ask(Undo{});
  EXPECT_FALSE(control_->routes()[0].active) << "the edits before the file's are not lost";
  ask(Save{});
  EXPECT_THAT(test::readBytes(path_), HasSubstr("\"active\":false"));
}

TEST_F(ControlTest, SavesThatFollowEachOtherAreAllDone) {
  std::vector<Answer> answers;
  for (const float gain : {0.1F, 0.2F, 0.3F}) {
    control_->execute(SetRoute{kFirst, gain}, {}, [](const Answer&) {});
    control_->execute(Save{}, {}, [&](const Answer& answer) { answers.push_back(answer); });
  }
  EXPECT_TRUE(test::eventually([&] {
    control_->tick({});
    return answers.size() == 3;
  }));
  EXPECT_THAT(answers, testing::Each(Answer(Done{3})));
  EXPECT_THAT(test::readBytes(path_), HasSubstr("\"gain\":0.3,"));
  EXPECT_TRUE(control_->status().isSaved);
  EXPECT_FALSE(patch_->loadIfChanged());
}

TEST_F(ControlTest, SaysWhyItCannotSave) {
  ::unlink(path_.c_str());
  ::mkdir(path_.c_str(), 0700);
  EXPECT_THAT(refusal(Save{}), HasSubstr("is not a regular file"));
}

TEST_F(ControlTest, WithoutAFolderThereAreNoScenes) {
  Control::Config config = this->config();
  config.sceneFolder.reset();
  const Routes routes = control_->routes();
  control_->remove(*this);
  control_ = std::make_unique<Control>(config, *patch_, routes, nullptr);
  for (const Command& command : {Command(ListScenes{}), Command(RecallScene{"x"}), Command(SaveScene{"x"})})
    EXPECT_THAT(refusal(command), HasSubstr("--scenes"));
}

TEST_F(ControlTest, DumpsAllRoutesAndLabels) {
  EXPECT_EQ(
      ask(Dump{}),
      Answer(RouteDump{
          0, {{kFirst, 0.5F, true, ""}, {{1, 1}, -1.0F, false, ""}}, {"Vox", "", "", ""}, {"", "", "", ""}}));
}

TEST_F(ControlTest, TellsTheStatusSoonAfterAChangeButNotAfterEachOfMany) {
  const Control::Time begin{};
  using std::chrono::milliseconds;
  control_->tick(begin);
  ASSERT_EQ(statuses_.size(), 1U);
  // 50 changes in half a second.
  for (int ms = 10; ms <= 500; ms += 10) {
    ask(SetRoute{kFirst, static_cast<float>(ms)});
    control_->tick(begin + milliseconds(ms));
  }
  EXPECT_EQ(statuses_.size(), 6U);
  EXPECT_EQ(statuses_.back().serial, 50U);
}

TEST_F(ControlTest, TellsTheStatusEverySecondAndWhenTheDeviceChanges) {
  const Control::Time begin{};
  using std::chrono::milliseconds;
  for (int ms = 0; ms <= 3000; ms += 10) control_->tick(begin + milliseconds(ms));
  EXPECT_EQ(statuses_.size(), 4U);
  control_->deviceChanged();
  ASSERT_EQ(statuses_.size(), 5U);
  EXPECT_EQ(statuses_.back().device.name, "Box");
  EXPECT_EQ(statuses_.back().routes, 2U);
  EXPECT_EQ(statuses_.back().heard, 1U);
}

TEST_F(ControlTest, WithoutAMeterNoTurnIsDueForMeters) {
  wantsMeters_ = true;
  const Control::Time begin{};
  control_->tick(begin);
  EXPECT_EQ(control_->due(begin), begin + std::chrono::seconds(1)) << "which is for the status";
}

}  // namespace
}  // namespace tolvane::ctl::control
