// The application window, the focus-zoom setting and the layout direction.
#include "UtilTestUtil.h"

namespace {

using namespace utiltest;

TEST(UtilWindow, IsCreatedOnceAsATransparentShownDialog) {
  tvtest::TempTv tv;
  Evas_Object* window = Util::GetWindow();
  ASSERT_NE(nullptr, window);
  EXPECT_EQ(window, Util::GetWindow());
  EXPECT_EQ(std::vector<std::string>{"create AlphaTranWin"}, tv.AppMessages());
  EXPECT_TRUE(tv.Logged("GetWindow", "create AlphaTranWin", 0, 5));
  EXPECT_EQ(ELM_WIN_DIALOG_BASIC, elm_win_type_get(window));
  EXPECT_TRUE(elm_win_autodel_get(window));
  EXPECT_TRUE(elm_win_alpha_get(window));
  EXPECT_EQ(ELM_WIN_INDICATOR_HIDE, elm_win_indicator_mode_get(window));
  EXPECT_TRUE(elm_win_focus_highlight_enabled_get(window));
  EXPECT_TRUE(evas_object_visible_get(window));
  // Once the toolkit deletes it, the next call makes a new one instead of a dead pointer.
  evas_object_del(window);
  Evas_Object* again = Util::GetWindow();
  ASSERT_NE(nullptr, again);
  EXPECT_TRUE(evas_object_visible_get(again));
}

TEST(UtilWindow, FocusZoomIsOnForPositiveValuesOnlyAndReverseOsdFollowsTheLanguage) {
  struct Row { json value; bool enlarged; const char* line; int buffer; } rows[] = {  // value null: key missing
      {1, true, "is enlarge on: 1", 0}, {7, true, "is enlarge on: 7", 0}, {0, false, "is enlarge on: 0", 0},
      {-3, false, "is enlarge on: -3", 0}, {nullptr, false, "get enlarge failed", 2}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.line);
    json settings = json::object();
    if (!row.value.is_null()) settings["db/menu/system/accessibility/focuszoom"] = row.value;
    auto tv = Tv({{"settings", settings}});
    EXPECT_EQ(row.enlarged, Util::IsEnlarge());
    EXPECT_TRUE(tv->Logged("IsEnlarge", row.line, row.buffer, 5));
  }
  const std::pair<const char*, bool> directions[] = {{"ar_AE", true}, {"en_US", false}, {"he_IL", true}, {"de_DE", false}};
  for (const auto& [language, reversed] : directions) {
    SCOPED_TRACE(language);
    auto tv = Tv({{"settings", {{"db/menu/system/language", language}}}});
    EXPECT_EQ(reversed, Util::ReverseOSD());
  }
}

}  // namespace
