#include "analysis/graph.h"

#include <cstring>

namespace {

// The picture, in SVG user units (pixels): the whole, and the plot area inside it.
constexpr int32_t chartWidth = 760;
constexpr int32_t chartHeight = 330;
constexpr int32_t plotLeft = 48;
constexpr int32_t plotRight = chartWidth - 18;
constexpr int32_t plotTop = 46;
constexpr int32_t plotBottom = 276;
constexpr int32_t zeroY = (plotTop + plotBottom) / 2;

// Colours: the area where White is better, where Black is better, the curve, the two marks.
// (the board's light and dark squares: light where White is better, dark where Black is).
constexpr const char* whiteArea = "#f0d9b5";
constexpr const char* blackArea = "#b58863";
constexpr const char* background = "#ffffff";
constexpr const char* curveColour = "#2a2a2a";
constexpr const char* mistakeColour = "#f59f00";
constexpr const char* blunderColour = "#d62828";

// Move-number steps for the labels along the bottom; the first that keeps them to about a dozen.
constexpr int32_t labelSteps[] = {1, 2, 5, 10, 20, 50, 100, 200};
constexpr int32_t mostLabels = 14;

double xOf(const GameChart& chart, int32_t point) {
    const int32_t span = chart.count > 1 ? chart.count - 1 : 1;
    return plotLeft + static_cast<double>(plotRight - plotLeft) * point / span;
}

double yOf(int32_t centipawns) {
    return zeroY - static_cast<double>(zeroY - plotTop) * centipawns / chartLimit;
}

// Text for SVG: &, <, >, " as entities; bytes that are no UTF-8 and control characters as '?'.
void writeEscaped(FILE* out, const char* text) {
    const auto* p = reinterpret_cast<const unsigned char*>(text);
    while (*p != '\0') {
        const unsigned char c = *p;
        int32_t follow = c >= 0xF0 && c <= 0xF4 ? 3 : c >= 0xE0 ? 2 : c >= 0xC2 ? 1 : 0;
        if (c >= 0x80 && follow == 0) {
            std::fputc('?', out);
            ++p;
            continue;
        }
        bool whole = true;
        for (int32_t i = 1; i <= follow; ++i)
            whole = whole && (p[i] & 0xC0) == 0x80;
        if (!whole) {
            std::fputc('?', out);
            ++p;
            continue;
        }
        if (follow > 0) {
            std::fwrite(p, 1, static_cast<size_t>(follow + 1), out);
            p += follow + 1;
            continue;
        }
        switch (c) {
        case '&':
            std::fputs("&amp;", out);
            break;
        case '<':
            std::fputs("&lt;", out);
            break;
        case '>':
            std::fputs("&gt;", out);
            break;
        case '"':
            std::fputs("&quot;", out);
            break;
        default:
            std::fputc(c < ' ' ? '?' : c, out);
        }
        ++p;
    }
}

// The curve's points, from the zero line at the first point to the zero line at the last.
void writeArea(FILE* out, const GameChart& chart, const char* fill, const char* clip) {
    std::fprintf(out, "<polygon clip-path=\"url(#%s)\" fill=\"%s\" points=\"%.1f,%d", clip, fill,
                 xOf(chart, 0), zeroY);
    for (int32_t i = 0; i < chart.count; ++i)
        std::fprintf(out, " %.1f,%.1f", xOf(chart, i), yOf(chart.points[i].centipawns));
    std::fprintf(out, " %.1f,%d\"/>\n", xOf(chart, chart.count - 1), zeroY);
}

void writeGrid(FILE* out, const GameChart& chart) {
    // A line at every pawn, the zero line darker, the values at the left.
    for (int32_t pawns = -chartLimit / 100; pawns <= chartLimit / 100; ++pawns) {
        const double y = yOf(pawns * 100);
        if (pawns != 0 && pawns != chartLimit / 100 && pawns != -chartLimit / 100) {
            std::fprintf(out,
                         "<line x1=\"%d\" y1=\"%.1f\" x2=\"%d\" y2=\"%.1f\" stroke=\"#808080\" "
                         "stroke-opacity=\"0.35\" stroke-width=\"0.8\"/>\n",
                         plotLeft, y, plotRight, y);
        }
        std::fprintf(out,
                     "<text x=\"%d\" y=\"%.1f\" font-size=\"11\" fill=\"#444\" "
                     "text-anchor=\"end\">%s%d</text>\n",
                     plotLeft - 6, y + 4, pawns > 0 ? "+" : (pawns < 0 ? "\xe2\x88\x92" : ""),
                     pawns < 0 ? -pawns : pawns);
    }
    std::fprintf(out,
                 "<line x1=\"%d\" y1=\"%d\" x2=\"%d\" y2=\"%d\" stroke=\"#808080\" "
                 "stroke-width=\"1\"/>\n",
                 plotLeft, zeroY, plotRight, zeroY);

    // Move numbers along the bottom, each under the point after White's move of that number.
    const int32_t blackFirst = chart.blackFirst ? 1 : 0;
    const int32_t firstNumber = chart.startNumber;
    const int32_t lastNumber = chart.startNumber + (chart.count - 1 + blackFirst) / 2;
    int32_t step = labelSteps[0];
    for (int32_t s : labelSteps) {
        step = s;
        if ((lastNumber - firstNumber) / s + 1 <= mostLabels) break;
    }
    for (int32_t number = (firstNumber + step - 1) / step * step; number <= lastNumber;
         number += step) {
        const int32_t point = 2 * (number - firstNumber) + 1 - blackFirst;
        if (point < 0 || point >= chart.count) continue;
        const double x = xOf(chart, point);
        std::fprintf(out,
                     "<line x1=\"%.1f\" y1=\"%d\" x2=\"%.1f\" y2=\"%d\" stroke=\"#808080\" "
                     "stroke-opacity=\"0.35\" stroke-width=\"0.8\"/>\n",
                     x, plotTop, x, plotBottom);
        std::fprintf(out,
                     "<text x=\"%.1f\" y=\"%d\" font-size=\"11\" fill=\"#444\" "
                     "text-anchor=\"middle\">%d</text>\n",
                     x, plotBottom + 15, static_cast<int>(number));
    }
}

// Label rows beside the marks: a label goes into the first row (counted away from the edge it
// is nearest) where it does not run into the label before it.
constexpr int32_t labelRows = 4;
constexpr int32_t labelRowHeight = 14;
constexpr double labelCharWidth = 6.8; // bold 11-pixel text, on average

// A circle on each mistake and blunder, labelled with the move.
void writeMarks(FILE* out, const GameChart& chart) {
    for (int32_t i = 0; i < chart.count; ++i) {
        const ChartPoint& p = chart.points[i];
        if (p.mark == Mark::none) continue;
        const char* colour = p.mark == Mark::blunder ? blunderColour : mistakeColour;
        std::fprintf(out,
                     "<circle cx=\"%.1f\" cy=\"%.1f\" r=\"5\" fill=\"%s\" stroke=\"#ffffff\" "
                     "stroke-width=\"1.5\"/>\n",
                     xOf(chart, i), yOf(p.centipawns), colour);
    }
    // Labels of points in the upper half go below them, those in the lower half above them.
    double rowEnd[2][labelRows];
    for (auto& half : rowEnd) {
        for (double& end : half)
            end = -1e9;
    }
    for (int32_t i = 0; i < chart.count; ++i) {
        const ChartPoint& p = chart.points[i];
        if (p.mark == Mark::none) continue;
        const char* colour = p.mark == Mark::blunder ? blunderColour : mistakeColour;
        const double x = xOf(chart, i);
        const double y = yOf(p.centipawns);
        const double width = labelCharWidth * static_cast<double>(std::strlen(p.move));
        double left = x - width / 2;
        if (left < plotLeft + 2) left = plotLeft + 2;
        if (left + width > plotRight - 2) left = plotRight - 2 - width;
        const int32_t half = p.centipawns > 0 ? 0 : 1;
        int32_t row = 0;
        while (row < labelRows - 1 && rowEnd[half][row] > left - 6)
            ++row;
        rowEnd[half][row] = left + width;
        const double labelY =
            half == 0 ? y + 20 + row * labelRowHeight : y - 10 - row * labelRowHeight;
        std::fprintf(out,
                     "<text x=\"%.1f\" y=\"%.1f\" font-size=\"11\" font-weight=\"bold\" "
                     "fill=\"%s\" stroke=\"#ffffff\" stroke-width=\"3\" paint-order=\"stroke\">",
                     left, labelY, colour);
        writeEscaped(out, p.move);
        std::fputs("</text>\n", out);
    }
}

void writeLegend(FILE* out, const GameChart& chart) {
    const int32_t y = chartHeight - 14;
    std::fprintf(out,
                 "<text x=\"%d\" y=\"%d\" font-size=\"11\" fill=\"#444\">value after each move, "
                 "pawns from White's side (mates at %d)</text>\n",
                 plotLeft, y, chartLimit / 100);
    const int32_t x = plotRight - 236;
    std::fprintf(out,
                 "<circle cx=\"%d\" cy=\"%d\" r=\"5\" fill=\"%s\"/>\n"
                 "<text x=\"%d\" y=\"%d\" font-size=\"11\" fill=\"#444\">? mistake "
                 "(%d.%02d)</text>\n",
                 x, y - 4, mistakeColour, x + 9, y, static_cast<int>(chart.mistakeThreshold / 100),
                 static_cast<int>(chart.mistakeThreshold % 100));
    std::fprintf(out,
                 "<circle cx=\"%d\" cy=\"%d\" r=\"5\" fill=\"%s\"/>\n"
                 "<text x=\"%d\" y=\"%d\" font-size=\"11\" fill=\"#444\">?? blunder "
                 "(%d.%02d)</text>\n",
                 x + 125, y - 4, blunderColour, x + 134, y,
                 static_cast<int>(chart.blunderThreshold / 100),
                 static_cast<int>(chart.blunderThreshold % 100));
}

} // namespace

void writeChart(FILE* out, const GameChart& chart) {
    std::fprintf(out,
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
                 "viewBox=\"0 0 %d %d\" font-family=\"DejaVu Sans, Verdana, sans-serif\">\n",
                 chartWidth, chartHeight, chartWidth, chartHeight);
    std::fputs("<title>", out);
    writeEscaped(out, chart.title);
    std::fputs("</title>\n", out);
    std::fprintf(out,
                 "<defs>\n<clipPath id=\"above\"><rect x=\"%d\" y=\"%d\" width=\"%d\" "
                 "height=\"%d\"/></clipPath>\n<clipPath id=\"below\"><rect x=\"%d\" y=\"%d\" "
                 "width=\"%d\" height=\"%d\"/></clipPath>\n</defs>\n",
                 plotLeft, plotTop, plotRight - plotLeft, zeroY - plotTop, plotLeft, zeroY,
                 plotRight - plotLeft, plotBottom - zeroY);
    std::fprintf(out, "<rect width=\"%d\" height=\"%d\" fill=\"#ffffff\"/>\n", chartWidth,
                 chartHeight);
    std::fprintf(out,
                 "<text x=\"%d\" y=\"26\" font-size=\"15\" font-weight=\"bold\" fill=\"#222\">",
                 plotLeft);
    writeEscaped(out, chart.title);
    std::fputs("</text>\n", out);
    std::fprintf(out, "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"%s\"/>\n",
                 plotLeft, plotTop, plotRight - plotLeft, plotBottom - plotTop, background);
    if (chart.count > 0) {
        writeArea(out, chart, whiteArea, "above");
        writeArea(out, chart, blackArea, "below");
    }
    writeGrid(out, chart);
    if (chart.count > 0) {
        std::fprintf(out,
                     "<polyline fill=\"none\" stroke=\"%s\" stroke-width=\"2\" "
                     "stroke-linejoin=\"round\" points=\"",
                     curveColour);
        for (int32_t i = 0; i < chart.count; ++i)
            std::fprintf(out, "%s%.1f,%.1f", i > 0 ? " " : "", xOf(chart, i),
                         yOf(chart.points[i].centipawns));
        std::fputs("\"/>\n", out);
    }
    writeMarks(out, chart);
    std::fprintf(out,
                 "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"none\" "
                 "stroke=\"#808080\"/>\n",
                 plotLeft, plotTop, plotRight - plotLeft, plotBottom - plotTop);
    writeLegend(out, chart);
    std::fputs("</svg>\n", out);
}
