// print-page's options, settings, input kinds and drop levels.
#include <gtest/gtest.h>

#include <fstream>

#include "print_page/console.h"
#include "print_page/drop_levels.h"
#include "print_page/input.h"
#include "print_page/input_kind.h"
#include "print_page/options.h"
#include "print_page/page.h"
#include "print_page/settings.h"
#include "print_page/temporary_folder.h"

namespace qrn::tool {
namespace {

TEST(Levels, DitherToTheInksShareAndKeepTheEnds) {
  for (unsigned ink = 0; ink < 256; ++ink) {
    unsigned sum = 0;
    for (unsigned place = 0; place < 64; ++place)
      sum += LevelOf(static_cast<std::uint8_t>(ink), place % kScreenPixels, place / kScreenPixels);
    EXPECT_NEAR(ink * 3.0 / 255.0, sum / 64.0, 1.0 / 64);
  }
}

TEST(Progress, FitsATerminalOfFortyColumns) {
  EXPECT_EQ("page 1: rendering, 12 s", ProgressText({1, 0, "rendering", 0, 0, 12}));
  EXPECT_EQ("page 2/5: printing 50 % [######.......]", ProgressText({2, 5, "printing", 9, 18, 0}));
  for (const char* doing : {"rendering", "printing", "paused at", "reconnecting at"}) {
    for (const std::uint32_t page : {1u, 999u, 99999u, 4294967294u})
      EXPECT_GE(39u, ProgressText({page, page, doing, 100, page % 2 * 100, 99999}).size());
  }
}

TEST(Options, SlotsAreReadOrRefused) {
  SlotMap slots;
  std::string error;
  ASSERT_TRUE(ParseSlots("3,-,0", &slots, &error));
  EXPECT_EQ((SlotMap{3, kBlank, 0, kBlank, kBlank, kBlank, kBlank, kBlank}), slots);
  for (const char* text : {"8", "a", "0,,1", "0,1,2,3,4,5,6,7,0", "", "-,-"})
    EXPECT_FALSE(ParseSlots(text, &slots, &error)) << text;
}

TEST(Settings, AreTakenOrRefusedByName) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("printer.toml");
  const auto load = [&](const char* text, sim::Machine* machine) {
    std::ofstream(path) << text;
    std::string error;
    return LoadSettings(path, machine, &error) ? std::string() : error;
  };
  sim::Machine machine;
  EXPECT_EQ("",
            load("heads = 'phb'\nhead_gap_x = [1, 2, 3, 4]\nhead_gap_y = 7\nbidirectional = false\n"
                 "ink_order_phb = [1,1,2,2,3,3,4,4]",
                 &machine));
  EXPECT_EQ(sim::Heads::kPhb, machine.heads);
  EXPECT_EQ(4, machine.headGapX[3]);
  EXPECT_EQ(7, machine.headGapY[0]);
  EXPECT_FALSE(machine.bidirectional);
  for (const char* text :
       {"speed = 256", "speed = 0", "speed = 'fast'", "heads = 'three'", "head_gap_x = [1,2]",
        "ink_order_pha = [8,0,0,0,0,0,0,0]", "colour = 3", "speed = "}) {
    const std::string error = load(text, &machine);
    EXPECT_EQ(0u, error.find("'" + path + "': ")) << text << ": " << error;
    EXPECT_EQ(std::string::npos, error.find('\n'));
  }
  std::string folderError;
  EXPECT_FALSE(LoadSettings(folder.Path(""), &machine, &folderError));
  EXPECT_EQ("'" + folder.Path("") + "': is a folder", folderError);
  // The documented example is what a machine is without settings.
  sim::Machine example;
  std::string error;
  ASSERT_TRUE(LoadSettings(QRN_SAMPLES_DIR "/printer.toml", &example, &error)) << error;
  EXPECT_EQ(ParameterBlock(sim::Machine{}), ParameterBlock(example));
}

TEST(Input, IsToldByItsFirstBytesAndNamedWhenItCannotBeRead) {
  EXPECT_EQ(InputKind::kRaster, KindOf("2SaR...."));
  EXPECT_EQ(InputKind::kPdf, KindOf("%PDF-1.7"));
  EXPECT_EQ(InputKind::kPicture, KindOf(std::string("II*\0", 4)));
  EXPECT_EQ(InputKind::kUnknown, KindOf("hello"));
  const TemporaryFolder folder;
  const std::string path = folder.Path("page");
  std::string error;
  EXPECT_EQ(nullptr, Input::Open(path, {}, &error));
  EXPECT_EQ("'" + path + "': No such file or directory", error);
  std::ofstream(path) << "hello";
  EXPECT_EQ(nullptr, Input::Open(path, {}, &error));
  EXPECT_EQ(0u, error.find("'" + path + "': is none of"));
}

}  // namespace
}  // namespace qrn::tool
