#pragma once

/// Colours and measures that several views share; style sheets take them as text.
namespace orvelle::palette {

constexpr char kAccent[] = "#19a4ff";
constexpr char kSideBar[] = "#f6f6f6";
constexpr char kText[] = "#333333";
constexpr char kFaintText[] = "#6b6b6b";
constexpr char kBar[] = "#393736";  ///< behind white text over a picture
constexpr char kFontFamily[] = "Microsoft YaHei";
constexpr int kFontPixels = 14;

}  // namespace orvelle::palette
