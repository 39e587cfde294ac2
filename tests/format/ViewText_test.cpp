#include "format/ViewText.h"

#include <gtest/gtest.h>

TEST(ViewText, LineFeedsBecomeCrLf) {
    EXPECT_EQ(AsViewText(L"\nProgram:\n\tname: PC1\n"), L"\r\nProgram:\r\n\tname: PC1\r\n");
}

TEST(ViewText, CrLfAndLoneCrAreOneBreakEach) {
    EXPECT_EQ(AsViewText(L"a\nb\r\nc\rd"), L"a\r\nb\r\nc\r\nd");
    EXPECT_EQ(AsViewText(L"\r\r\n\n"), L"\r\n\r\n\r\n");
}

TEST(ViewText, TextWithoutBreaksIsUnchanged) {
    EXPECT_EQ(AsViewText(L""), L"");
    EXPECT_EQ(AsViewText(L"\t\u00e9\u20ac"), L"\t\u00e9\u20ac");
}

TEST(ViewText, PiecesConvertAsTheirWholeDoes) {
    // Every way of cutting the text in two, a CR LF cut in the middle included.
    const std::wstring whole = L"a\r\nb\rc\n\r\r\nd\r";
    for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
        ViewTextConverter converter;
        std::wstring out;
        converter.Convert(std::wstring_view(whole).substr(0, cut), out);
        converter.Convert(std::wstring_view(whole).substr(cut), out);
        EXPECT_EQ(out, L"a\r\nb\r\nc\r\n\r\n\r\nd\r\n") << cut;
    }
}

TEST(ViewText, SinkHandsOnEachPieceConverted) {
    RecordingSink pieces;
    ViewTextSink view(pieces);
    view.Append(L"Program:\r");
    view.Append(L"\n\tname: PC1\n");
    view.Append(L"");
    ASSERT_EQ(pieces.Pieces().size(), 3u);
    EXPECT_EQ(pieces.Pieces()[0], L"Program:\r\n");
    EXPECT_EQ(pieces.Pieces()[1], L"\tname: PC1\r\n");
    EXPECT_EQ(pieces.Pieces()[2], L"");
}
