#pragma once
// Ranges and factory defaults of the parameter boxes, in display units (S for the times, Kg for the rest).
// Kept as text: "2" and "2.0" both show as written, in the hints and in the messages.
#include <QString>
#include <QStringList>
#include <array>

struct Limit {
    const char* low;
    const char* high;
    const char* deflt;
};

// Scale kinds of the parameter editor, in the order of the columns below.
enum class ScaleKind { Aggregate, SpareTwoMaterial6, Water, Cement, Powder, SpareTwoMaterial10, Additive };

// Kind of each scale the menu offers; 6 and 10 are separate kinds because their slow feed rows differ.
inline constexpr std::array<ScaleKind, 14> kKindOfScale = {
    ScaleKind::Aggregate, ScaleKind::Aggregate, ScaleKind::Aggregate,          ScaleKind::Aggregate,
    ScaleKind::Aggregate, ScaleKind::Aggregate, ScaleKind::SpareTwoMaterial6, ScaleKind::Water,
    ScaleKind::Cement,    ScaleKind::Powder,    ScaleKind::SpareTwoMaterial10, ScaleKind::Additive,
    ScaleKind::Additive,  ScaleKind::Additive,
};

// Rows 0 to 14 of Cansd by kind. Hidden rows carry values too: they are checked or written all the same.
// The unevenness ("2.0" beside "2", "0.5" beside "0.50", "3" among "50.0") is settled and kept.
inline constexpr std::array<std::array<Limit, 15>, 7> kLimitsByKind = {{
    // aggregate, scales 0 to 5
    {{{"0.1", "2.0", "0.3"}, {"0.1", "2.0", "0.3"}, {"0", "9", "5"}, {"20", "200", "50"}, {"1", "100", "20"},
      {"1", "200", "30"}, {"0", "300", "300"}, {"0", "300", "100"}, {"1", "100", "30"}, {"100", "500", "500"},
      {"0", "500", "60"}, {"0", "500", "60"}, {"0", "500", "60"}, {"0", "500", "350"}, {"0", "500", "60"}}},
    // spare two-material scale 6: row 14 is its slow feed, though the box stays hidden
    {{{"0.1", "2", "0.3"}, {"0.1", "3.0", "0.3"}, {"0", "9", "5"}, {"10", "100", "25"}, {"1", "50", "10"},
      {"1", "100", "20"}, {"0", "300", "300"}, {"0", "300", "20"}, {"1", "50", "8"}, {"20", "50", "50"},
      {"0", "50", "12"}, {"0", "50", "12"}, {"0", "50", "12"}, {"0", "50", "12"}, {"1", "500", "5"}}},
    // water, scale 7
    {{{"0.1", "2", "0.3"}, {"0.1", "2.0", "0.3"}, {"0", "9", "5"}, {"10.0", "50.0", "20.0"}, {"1.0", "20.0", "6.0"},
      {"1.0", "100.0", "20.0"}, {"0", "100.0", "100.0"}, {"0", "100.0", "5.0"}, {"1.0", "50.0", "5.0"},
      {"10.0", "50.0", "50.0"}, {"0", "50.0", "3"}, {"0", "50.0", "3"}, {"0", "50.0", "3"}, {"0.0", "100.0", "25.0"},
      {"0", "50.0", "3"}}},
    // cement, scale 8: row 13 is the fourth material's fall correction, row 14 the slow feed
    {{{"0.1", "2.0", "0.3"}, {"0.1", "3.0", "0.3"}, {"0", "9", "5"}, {"10", "100", "25"}, {"1", "50", "10"},
      {"1", "100", "20"}, {"0", "300", "300"}, {"0", "300", "20"}, {"1", "50", "8"}, {"20", "100", "100"},
      {"0", "100", "20"}, {"0", "100", "20"}, {"0", "100", "20"}, {"0", "100", "20"}, {"1", "500", "5"}}},
    // powder, scale 9
    {{{"0.1", "2", "0.3"}, {"0.1", "3.0", "0.3"}, {"0", "9", "5"}, {"10", "100", "25"}, {"1", "50", "10"},
      {"1", "100", "20"}, {"0", "300", "300"}, {"0", "300", "20"}, {"1", "50", "8"}, {"20", "100", "100"},
      {"0", "100", "12"}, {"0", "100", "12"}, {"0", "100", "12"}, {"0", "100", "12"}, {"1", "500", "5"}}},
    // spare two-material scale 10: row 12 is its slow feed box
    {{{"0.1", "2", "0.3"}, {"0.1", "3.0", "0.3"}, {"0", "9", "5"}, {"10", "100", "25"}, {"1", "50", "10"},
      {"1", "100", "20"}, {"0", "300", "300"}, {"0", "300", "20"}, {"1", "50", "8"}, {"20", "50", "50"},
      {"0", "50", "12"}, {"0", "50", "12"}, {"1", "500", "5"}, {"0", "50", "12"}, {"0", "50", "12"}}},
    // additive, scales 11 to 13
    {{{"0.1", "2", "0.3"}, {"0.1", "2.0", "0.3"}, {"0", "9", "5"}, {"0.20", "1.00", "0.5"}, {"0.05", "1.00", "0.20"},
      {"0.05", "2.00", "0.50"}, {"0", "5.00", "2.00"}, {"0", "5.00", "0.20"}, {"0.05", "0.50", "0.20"},
      {"1.00", "10.00", "10.00"}, {"0", "10.00", "0.50"}, {"0", "10.00", "0.50"}, {"0", "10.00", "0.50"},
      {"0", "5.00", "2.00"}, {"0", "10.00", "0.50"}}},
}};

// The aggregate editor: one table for every scale.
inline constexpr std::array<Limit, 20> kLimitsAG = {{
    {"2", "9", "5"},                                                                  // delay before the check
    {"0.2", "2.0", "0.3"}, {"0.2", "2.0", "0.3"}, {"0.2", "2.0", "0.3"}, {"0.2", "2.0", "0.3"},  // M1..M4 top-up
    {"0", "9", "5"},                                                                  // discharge delay
    {"20", "200", "50"},                                                              // key zeroing
    {"5", "100", "20"},                                                               // zero range
    {"10", "100", "30"}, {"10", "100", "30"}, {"10", "100", "30"}, {"10", "100", "30"},
    {"100", "500", "500"}, {"100", "500", "500"}, {"100", "500", "500"}, {"100", "500", "500"},
    {"0", "500", "60"}, {"0", "500", "60"}, {"0", "500", "60"}, {"0", "500", "60"},
}};

// The three text arrays of a form, filled from a table row.
struct LimitTexts {
    QStringList low, high, deflt;
};

// Limits of Cansd for a scale; all three lists empty outside 0 to 13.
LimitTexts LoadLimits(int scaleNo);
LimitTexts LoadLimitsAG();
