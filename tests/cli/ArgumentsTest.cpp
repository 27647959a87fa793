#include "cli/Arguments.h"

#include "cli/CommandErrors.h"
#include "cli/RecordArguments.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

const std::vector<Option> known = {
    {"--plain", OptionValue::none}, {"--needs", OptionValue::required}, {"--may", OptionValue::optional}};

TEST(Arguments, SortsWordsIntoOptionsAndTheRest) {
    const auto arguments = parseArguments({"a", "--plain", "b", "--needs", "-5", "--may", "--", "--plain"}, known);
    ASSERT_TRUE(arguments) << arguments.error().message;
    EXPECT_EQ(arguments->positional, (QStringList{"a", "b", "--plain"}));
    EXPECT_EQ(arguments->value("--needs"), "-5");
    EXPECT_EQ(arguments->value("--may"), "");
    EXPECT_TRUE(arguments->has("--plain"));

    EXPECT_EQ(parseArguments({"--may", "x", "--plain"}, known)->value("--may"), "x");
    EXPECT_EQ(parseArguments({"--needs=a=b"}, known)->value("--needs"), "a=b");
}

TEST(Arguments, RefusesWhatItDoesNotKnowAndSaysSo) {
    const std::vector<std::pair<QStringList, std::string>> rows = {
        {{"--other"}, "unknown option --other"},
        {{"--needs"}, "--needs needs a value"},
        {{"--needs", "--plain"}, "--needs needs a value"},
        {{"--plain=1"}, "--plain takes no value"},
        {{"--plain", "--plain"}, "--plain is given twice"},
    };
    for (const auto& [words, message] : rows) {
        const auto arguments = parseArguments(words, known);
        ASSERT_FALSE(arguments) << message;
        EXPECT_EQ(arguments.error().message, message);
        EXPECT_EQ(exitStatus(arguments.error()), 2);
    }
}

TEST(Arguments, ReadsNumbersTheCWayWhateverTheLocale) {
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(parseNumber("--at", "1.5"), 1.5);
    EXPECT_FALSE(parseNumber("--at", "1,5"));
    QLocale::setDefault(QLocale::c());
    for (const char* bad : {"", "x", "nan", "inf", "1 2"})
        EXPECT_FALSE(parseNumber("--at", bad)) << bad;
}

TEST(RecordArguments, RefusesWhatCannotBeMeant) {
    const std::vector<std::pair<QStringList, std::string>> rows = {
        {{}, "record needs one of --display N, --window ID and --area X,Y,W,H"},
        {{"--display", "1", "--window", "2"}, "record needs one of --display N, --window ID and --area X,Y,W,H"},
        {{"--display", "first"}, R"(--display needs a number from "keldra sources", not "first")"},
        {{"--area", "1,2,3"}, R"(--area needs X,Y,WIDTH,HEIGHT in pixels, not "1,2,3")"},
        {{"--area", "1,2,0,4"}, "--area 1,2,0,4 is empty: width and height must be at least 1"},
        {{"--display", "1", "--seconds", "0"}, "--seconds must be more than 0"},
        {{"--display", "1", "--quality", "best"}, R"(--quality is high, medium or low, not "best")"},
        {{"--display", "1", "--click-sound", "loud"}, R"(--click-sound is soft or classic, not "loud")"},
        {{"--display", "1", "extra"}, R"(record takes no argument "extra")"},
    };
    for (const auto& [words, message] : rows) {
        const auto arguments = parseRecordArguments(words);
        ASSERT_FALSE(arguments) << message;
        EXPECT_EQ(arguments.error().message, message);
        EXPECT_EQ(exitStatus(arguments.error()), 2);
    }
}

class Selection : public testing::Test {
protected:
    /// Primary 1 with its lower left corner at the origin, 2 to its right and 100 higher.
    const QList<Screen> screens = {{1, "Main", QRectF(0, 0, 800, 600), {}, 1},
                                   {2, "Side", QRectF(800, 100, 400, 600), {}, 1}};
    const QList<WindowInfo> windows = {WindowInfo{0x400007, "Text", "editor", QRectF(10, 20, 300, 200)}};

    Result<CaptureSelection> select(const QStringList& words) {
        return selectionFor(*parseRecordArguments(words), screens, windows);
    }
};

TEST_F(Selection, CountsAreasFromTheTopLeftOfTheDesktop) {
    EXPECT_EQ(*select({"--area", "0,50,800,100"}), CaptureSelection(RegionSelection{1, QRectF(0, 550, 800, 100)}))
        << "the desktop's top is the higher screen's, beyond the primary's";
}

TEST_F(Selection, TakesTheDisplayThatHoldsMostOfTheArea) {
    EXPECT_EQ(std::get<RegionSelection>(*select({"--area", "790,200,100,100"})).displayID, 2u);
    EXPECT_EQ(std::get<RegionSelection>(*select({"--area", "710,200,100,100"})).displayID, 1u);
}

TEST_F(Selection, FindsDisplaysAndWindowsByNumber) {
    EXPECT_EQ(*select({"--display", "2"}), CaptureSelection(DisplaySelection{2, "Side"}));
    EXPECT_EQ(*select({"--window", "0x400007"}),
              CaptureSelection(WindowSelection{0, 0x400007, QRectF(10, 20, 300, 200), "Text"}));
}

TEST_F(Selection, SaysWhatIsThereInstead) {
    EXPECT_EQ(select({"--display", "7"}).error().message, "there is no display 7; there is: 1, 2");
    EXPECT_EQ(select({"--window", "7"}).error().message,
              R"(there is no window 7 on the screen; "keldra sources" lists what is there)");
    EXPECT_EQ(select({"--area", "0,5000,10,10"}).error().message,
              R"(the area 0,5000,10,10 lies outside every display; "keldra sources" lists them)");
    EXPECT_EQ(exitStatus(select({"--display", "7"}).error()), 1);
}

} // namespace
} // namespace keldra
