#pragma once
// The places and the time rows that the parts of the system function form share.
#include <QRect>

namespace OtherLayout {
constexpr int kFormWidth = 760, kFormHeight = 530;
constexpr int kTabLeft = 20, kTabStep = 142, kTabTop = 58, kTabWidth = 136, kTabHeight = 36;
constexpr int kPageTop = 100, kPageWidth = 740, kPageHeight = 330;
constexpr int kStatusTop = 438, kButtonsTop = 478;

// The six times: the tab that holds the field, the inclusive range in seconds, its text and the default.
struct TimeRow {
    int tab;
    double low;
    double high;
    const char* range;
    const char* deflt;
    const char* key;
    const char* caption;
    int top;
};
constexpr TimeRow kTimes[6] = {
    {0, 0, 60, "(0-60)S", "5", "OTHER012", "延时响铃时间", 188},
    {0, 3, 60, "(3-60)S", "5", "OTHER013", "持续响铃时间", 228},
    {1, 3, 60, "(3-60)S", "8", "OTHER020", "平皮带卸料延时停止时间", 188},
    {1, 5, 60, "(5-60)S", "18", "OTHER021", "过渡仓接料延时时间", 228},
    {2, 5, 60, "(5-60)S", "5", "OTHER028", "搅拌计时进行到", 178},
    {4, 0, 30, "(0-30)S", "5", "OTHER033", "拌缸卸料后成品储存斗延时卸料时间", 106},
};
}  // namespace OtherLayout
