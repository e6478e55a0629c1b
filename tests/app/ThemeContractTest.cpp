// docs/theme.md against the built themes, and the themes' own behaviour:
// mirroring, focus and selection states, the body font.
#include <Elementary.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "Toolkit.h"

namespace {

struct GroupContract {
  std::string file;  // "antenna-selection.edj" or "tv-platform.edj"
  std::string name;
  std::vector<std::string> parts;
  std::map<std::string, std::string> data;
};

std::vector<std::string> Quoted(const std::string& text) {
  static const std::regex quoted("`([^`]*)`");
  std::vector<std::string> names;
  for (auto it = std::sregex_iterator(text.begin(), text.end(), quoted); it != std::sregex_iterator(); ++it) {
    names.push_back((*it)[1]);
  }
  return names;
}

// "## File `x`", "### Group `y`", "- ... parts: `a`, `b`", "- data items: `k` = `v`, ...".
std::vector<GroupContract> ReadContract() {
  std::ifstream in(std::string(TV_SOURCE_DIR) + "/docs/theme.md");
  std::vector<GroupContract> groups;
  std::string file, line;
  while (std::getline(in, line)) {
    if (line.rfind("## File ", 0) == 0) {
      file = Quoted(line).at(0);
    } else if (line.rfind("### Group ", 0) == 0) {
      groups.push_back({file, Quoted(line).at(0), {}, {}});
    } else if (!groups.empty() && line.rfind("- ", 0) == 0) {
      const std::string label = line.substr(2, line.find(':') - 2);
      const std::vector<std::string> names = Quoted(line.substr(line.find(':') + 1));
      if (label.find("parts") != std::string::npos) {
        groups.back().parts.insert(groups.back().parts.end(), names.begin(), names.end());
      } else if (label == "data items") {
        for (size_t i = 0; i + 1 < names.size(); i += 2) groups.back().data[names[i]] = names[i + 1];
      }
    }
  }
  return groups;
}

std::string ThemePath(const std::string& file) {
  if (file == "tv-platform.edj") return tvsim::PlatformThemePath();
  return std::string(TV_RES_DIR) + "/edje/" + file;
}

// A group loaded on a canvas of its own, at a row's or popup's size.
class Loaded {
 public:
  Loaded(const std::string& file, const std::string& group, int width = 760, int height = 96)
      : m_ee(ecore_evas_buffer_new(1920, 1080)), m_object(edje_object_add(ecore_evas_get(m_ee))) {
    m_loaded = edje_object_file_set(m_object, ThemePath(file).c_str(), group.c_str());
    evas_object_resize(m_object, width, height);
    evas_object_show(m_object);
  }
  ~Loaded() {
    evas_object_del(m_object);
    ecore_evas_free(m_ee);
  }
  Loaded(const Loaded&) = delete;
  Loaded& operator=(const Loaded&) = delete;

  bool ok() const { return m_loaded; }
  Evas_Object* object() const { return m_object; }
  void Settle() {
    edje_message_signal_process();
    edje_object_calc_force(m_object);
  }
  // Where the text of a TEXT part starts and ends.
  std::pair<int, int> TextSpan(const char* part) {
    Settle();
    Evas_Coord x = 0, w = 0;
    evas_object_geometry_get(edje_object_part_object_get(m_object, part), &x, nullptr, &w, nullptr);
    return {x, x + w};
  }
  std::string State(const char* part) {
    Settle();
    double value = 0;
    const char* state = edje_object_part_state_get(m_object, part, &value);
    return state ? state : "";
  }

 private:
  Ecore_Evas* m_ee;
  Evas_Object* m_object;
  bool m_loaded = false;
};

TEST(ThemeContract, EveryDocumentedGroupPartAndDataItemIsBuilt) {
  const std::vector<GroupContract> groups = ReadContract();
  ASSERT_GE(groups.size(), 12u) << "docs/theme.md lost its group headings";
  for (const GroupContract& group : groups) {
    SCOPED_TRACE(group.file + ": " + group.name);
    ASSERT_TRUE(edje_file_group_exists(ThemePath(group.file).c_str(), group.name.c_str()));
    Loaded loaded(group.file, group.name);
    ASSERT_TRUE(loaded.ok());
    for (const std::string& part : group.parts) {
      EXPECT_TRUE(edje_object_part_exists(loaded.object(), part.c_str())) << "part " << part;
    }
    for (const auto& [key, value] : group.data) {
      const char* actual = edje_object_data_get(loaded.object(), key.c_str());
      EXPECT_STREQ(value.c_str(), actual) << "data item " << key;
    }
  }
  for (const char* file : {"antenna-selection.edj", "tv-platform.edj"}) {
    char* version = edje_file_data_get(ThemePath(file).c_str(), "theme.version");
    EXPECT_STREQ("1", version) << file;
    free(version);
  }
}

TEST(ThemeContract, TextsMoveToTheEndEdgeWhenMirrored) {
  struct Row { const char *file, *group, *part; } rows[] = {
      {"tv-platform.edj", "elm/genlist/item/C_Textitem_WhiteSingleline01/default", "elm.text"},
      {"tv-platform.edj", "elm/genlist/item/C_TextItem_WhiteMultiline01/default", "elm.text"},
      {"tv-platform.edj", "elm/genlist/item/C_TextItem_WhiteMultiline01/default", "elm.text.1"},
      {"tv-platform.edj", "elm/popup/base/C_PopupBasic_WhiteRight", "elm.text.title"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.group) + " " + row.part);
    Loaded loaded(row.file, row.group, 760, 400);
    ASSERT_TRUE(loaded.ok());
    edje_object_part_text_set(loaded.object(), row.part, "Air");
    const auto ltr = loaded.TextSpan(row.part);
    EXPECT_LT(ltr.first, 760 / 4);
    edje_object_mirrored_set(loaded.object(), EINA_TRUE);
    const auto rtl = loaded.TextSpan(row.part);
    EXPECT_GT(rtl.second, 760 * 3 / 4);
    edje_object_mirrored_set(loaded.object(), EINA_FALSE);
    EXPECT_EQ(ltr, loaded.TextSpan(row.part));
  }
}

TEST(ThemeContract, RowsShowFocusAndTheCurrentChoice) {
  for (const char* group : {"elm/genlist/item/C_Textitem_WhiteSingleline01/default",
                            "elm/genlist/item/C_TextItem_WhiteMultiline01/default"}) {
    SCOPED_TRACE(group);
    Loaded row("tv-platform.edj", group);
    ASSERT_TRUE(row.ok());
    EXPECT_EQ("default", row.State("focus_bg"));
    edje_object_signal_emit(row.object(), "elm,state,focused", "elm");
    EXPECT_EQ("focused", row.State("focus_bg"));
    EXPECT_EQ("focused", row.State("elm.text/clip"));
    edje_object_signal_emit(row.object(), "elm,state,selected", "elm");
    EXPECT_EQ("selected", row.State("current_clip"));
    edje_object_signal_emit(row.object(), "elm,state,unfocused", "elm");
    EXPECT_EQ("default", row.State("focus_bg"));
    EXPECT_EQ("selected", row.State("current_clip"));  // still the TV's current choice
    edje_object_signal_emit(row.object(), "elm,state,unselected", "elm");
    EXPECT_EQ("default", row.State("current_clip"));
  }
}

TEST(ThemeContract, ReverseOsdLaysTheBriefTextOutRightToLeft) {
  Loaded layout("antenna-selection.edj", "change.antenna.layout", 1200, 600);
  ASSERT_TRUE(layout.ok());
  EXPECT_EQ("default", layout.State("brief.text.area"));
  edje_object_signal_emit(layout.object(), "elm,state,reverse_osd", "elm");
  EXPECT_EQ("rtl", layout.State("brief.text.area"));
}

TEST(ThemeContract, TheBodyFontIsTheEmbeddedShippedFont) {
  // The application names "VelmoraPrism_400"; the platform theme carries it
  // as a copy of DejaVu Sans, so no fallback font is ever guessed.
  Loaded row("tv-platform.edj", "elm/genlist/item/C_Textitem_WhiteSingleline01/default");
  ASSERT_TRUE(row.ok());
  edje_object_text_class_set(row.object(), "black_body1_font", "VelmoraPrism_400", 30);
  edje_object_part_text_set(row.object(), "elm.text", "Air");
  row.Settle();
  const char* font = nullptr;
  Evas_Font_Size size = 0;
  evas_object_text_font_get(edje_object_part_object_get(row.object(), "elm.text"), &font, &size);
  ASSERT_NE(nullptr, font);
  // "edje/fonts/..." is a font carried in the .edj; a bare name would be left
  // to fontconfig's guess.
  EXPECT_STREQ("edje/fonts/VelmoraPrism_400", font);
  EXPECT_EQ(30, size);  // scale 0: exactly the size the application asked for
}

}  // namespace
