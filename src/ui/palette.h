#pragma once

/// Colours and measures that several views share; style sheets take the colours as text.
namespace orvelle::palette {

constexpr char kAccent[] = "#19a4ff";
constexpr char kAccentHover[] = "#1193ea";
constexpr char kAccentPressed[] = "#0f7fd0";
constexpr char kAccentTint[] = "#e8f6ff";  ///< behind accent text that the mouse is over
constexpr char kTitleBar[] = "#00a7f9";
constexpr char kSideBar[] = "#f6f6f6";
constexpr char kText[] = "#333333";
constexpr char kFaintText[] = "#6b6b6b";
constexpr char kPlaceholder[] = "#767676";
constexpr char kWarningText[] = "#d1343a";
constexpr char kFocusRing[] = "#0a4f86";
constexpr char kFrame[] = "#cccccc";
constexpr char kDisabled[] = "#bbbbbb";
constexpr char kDisabledGround[] = "#e9e9e9";
constexpr char kDisabledText[] = "#8a8a8a";
constexpr char kBar[] = "#393736";  ///< behind white text over a picture

constexpr char kFontFamily[] = "Microsoft YaHei";
constexpr int kFontPixels = 14;
constexpr int kSmallFontPixels = 12;
constexpr int kTitleFontPixels = 16;

constexpr int kDialogMargin = 24;
constexpr int kButtonWidth = 108;
constexpr int kButtonHeight = 34;
constexpr int kFieldHeight = 36;
constexpr int kToastMs = 2000;
constexpr int kToastAlphaOnWhite = 184;  ///< of black; less is too faint behind white text

}  // namespace orvelle::palette
