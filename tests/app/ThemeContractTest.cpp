// docs/theme.md against the built themes: every group, part and data item it
// names is built; texts move to the end edge when mirrored; rows show the focus
// and the current choice.
#include <Elementary.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "Toolkit.h"

namespace {

std::string ThemePath(const std::string& file) {
  return file == "tv-platform.edj" ? tvsim::PlatformThemePath() : std::string(TV_RES_DIR) + "/edje/" + file;
}

// A group loaded on a canvas of its own.
struct Loaded {
  Loaded(const std::string& file, const std::string& group, int width = 760, int height = 400)
      : ee(ecore_evas_buffer_new(1920, 1080)), object(edje_object_add(ecore_evas_get(ee))) {
    ok = edje_object_file_set(object, ThemePath(file).c_str(), group.c_str());
    evas_object_resize(object, width, height);
    evas_object_show(object);
  }
  ~Loaded() {
    evas_object_del(object);
    ecore_evas_free(ee);
  }
  void Settle() {
    edje_message_signal_process();
    edje_object_calc_force(object);
  }
  std::string State(const char* part) {
    Settle();
    double value = 0;
    const char* state = edje_object_part_state_get(object, part, &value);
    return state ? state : "";
  }
  // Where the text of a TEXT part starts and ends.
  std::pair<int, int> TextSpan(const char* part) {
    Settle();
    Evas_Coord x = 0, w = 0;
    evas_object_geometry_get(edje_object_part_object_get(object, part), &x, nullptr, &w, nullptr);
    return {x, x + w};
  }
  Ecore_Evas* ee;
  Evas_Object* object;
  bool ok = false;
};

}  // namespace

// "## File `x`", "### Group `y`", "- ... parts: `a`, `b`", "- data items: `k` = `v`, ...".
TEST(ThemeContract, EveryDocumentedGroupPartAndDataItemIsBuilt) {
  std::ifstream in(std::string(TV_SOURCE_DIR) + "/docs/theme.md");
  const std::regex quoted("`([^`]*)`");
  std::string file, group, line;
  std::unique_ptr<Loaded> loaded;
  int groups = 0;
  while (std::getline(in, line)) {
    const size_t colon = line.find(':');
    const std::string named = colon == std::string::npos ? line : line.substr(colon + 1);
    std::vector<std::string> names;
    for (auto it = std::sregex_iterator(named.begin(), named.end(), quoted); it != std::sregex_iterator(); ++it) {
      names.push_back((*it)[1]);
    }
    if (line.rfind("## File ", 0) == 0) {
      file = names.at(0);
    } else if (line.rfind("### Group ", 0) == 0) {
      ++groups;
      group = names.at(0);
      loaded = std::make_unique<Loaded>(file, group);
      EXPECT_TRUE(loaded->ok) << file << ": " << group;
    } else if (loaded && line.rfind("- ", 0) == 0 && colon != std::string::npos) {
      const std::string label = line.substr(2, colon - 2);
      for (size_t i = 0; label.find("parts") != std::string::npos && i < names.size(); ++i) {
        EXPECT_TRUE(edje_object_part_exists(loaded->object, names[i].c_str())) << group << ": part " << names[i];
      }
      for (size_t i = 0; label == "data items" && i + 1 < names.size(); i += 2) {
        EXPECT_STREQ(names[i + 1].c_str(), edje_object_data_get(loaded->object, names[i].c_str())) << group;
      }
    }
  }
  EXPECT_GE(groups, 12) << "docs/theme.md lost its group headings";
  for (const char* edj : {"antenna-selection.edj", "tv-platform.edj"}) {
    char* version = edje_file_data_get(ThemePath(edj).c_str(), "theme.version");
    EXPECT_STREQ("1", version) << edj;
    free(version);
  }
}

TEST(ThemeContract, TextsMoveToTheEndEdgeWhenMirroredAndRowsShowFocusAndTheCurrentChoice) {
  const std::pair<const char*, const char*> texts[] = {
      {"elm/genlist/item/C_Textitem_WhiteSingleline01/default", "elm.text"},
      {"elm/genlist/item/C_TextItem_WhiteMultiline01/default", "elm.text"},
      {"elm/genlist/item/C_TextItem_WhiteMultiline01/default", "elm.text.1"},
      {"elm/popup/base/C_PopupBasic_WhiteRight", "elm.text.title"}};
  for (const auto& [group, part] : texts) {
    SCOPED_TRACE(std::string(group) + " " + part);
    Loaded loaded("tv-platform.edj", group);
    edje_object_part_text_set(loaded.object, part, "Air");
    const auto ltr = loaded.TextSpan(part);
    EXPECT_LT(ltr.first, 760 / 4);
    edje_object_mirrored_set(loaded.object, EINA_TRUE);
    EXPECT_GT(loaded.TextSpan(part).second, 760 * 3 / 4);
    edje_object_mirrored_set(loaded.object, EINA_FALSE);
    EXPECT_EQ(ltr, loaded.TextSpan(part));
  }
  for (const char* group : {"elm/genlist/item/C_Textitem_WhiteSingleline01/default",
                            "elm/genlist/item/C_TextItem_WhiteMultiline01/default"}) {
    SCOPED_TRACE(group);
    Loaded row("tv-platform.edj", group, 760, 96);
    // signal sent, then the states of focus_bg, elm.text/clip and current_clip
    const std::pair<const char*, std::vector<std::string>> steps[] = {
        {"elm,state,focused", {"focused", "focused", "default"}},
        {"elm,state,selected", {"focused", "focused", "selected"}},
        {"elm,state,unfocused", {"default", "default", "selected"}},  // still the TV's current choice
        {"elm,state,unselected", {"default", "default", "default"}}};
    for (const auto& [signal, states] : steps) {
      edje_object_signal_emit(row.object, signal, "elm");
      EXPECT_EQ(states, std::vector<std::string>({row.State("focus_bg"), row.State("elm.text/clip"),
                                                  row.State("current_clip")})) << signal;
    }
  }
}
