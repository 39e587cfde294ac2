#include "format/RegistryValueText.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

// Little-endian UTF-16 code units, as the registry stores a string.
Bytes Utf16(std::u16string_view text, bool withTerminator = true) {
    Bytes bytes;
    for (char16_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    if (withTerminator) bytes.insert(bytes.end(), {0, 0});
    return bytes;
}

Bytes Dword(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

const InstallationValue& ValueNamed(std::wstring_view name) {
    for (const InstallationValue& value : kInstallationValues)
        if (value.name == name) return value;
    throw std::invalid_argument("no such installation value");
}

std::wstring Line(std::wstring_view name, const Bytes& data) {
    return FormatInstallationValueLine(ValueNamed(name), data);
}

}  // namespace

// --- Text

TEST(RegistryText, StopsAtTheTerminator) {
    EXPECT_EQ(RegistryDataAsText(Utf16(u"C:\\Program Files\\Orvane Software V9")),
              L"C:\\Program Files\\Orvane Software V9");
}

TEST(RegistryText, StopsAtTheFirstNulInsideTheData) {
    EXPECT_EQ(RegistryDataAsText(Utf16(std::u16string_view(u"first\0second", 12))), L"first");
}

TEST(RegistryText, MultiStringShowsItsFirstString) {
    const Bytes data = Utf16(std::u16string_view(u"Core\0Runner\0", 12));
    EXPECT_EQ(RegistryDataAsText(data), L"Core");
}

TEST(RegistryText, WithoutTerminatorTheWholeDataIsTaken) {
    EXPECT_EQ(RegistryDataAsText(Utf16(u"abc", false)), L"abc");
}

TEST(RegistryText, AnOddLastByteIsAUnitOfItsOwn) {
    Bytes data = Utf16(u"ab", false);
    data.push_back('c');
    EXPECT_EQ(RegistryDataAsText(data), L"abc");
}

TEST(RegistryText, EmptyDataIsEmptyText) {
    EXPECT_EQ(RegistryDataAsText({}), L"");
    EXPECT_EQ(RegistryDataAsText(Utf16(u"")), L"");
}

TEST(RegistryText, NonAsciiUnitsAreKept) {
    const std::wstring text = RegistryDataAsText(Utf16(u"\u00e9t\u00e9 \u20ac"));
    EXPECT_EQ(text, L"\u00e9t\u00e9 \u20ac");
}

TEST(RegistryText, NumberDataReadsAsTheUnitsItsBytesMake) {
    // 9 as a DWORD: 09 00 00 00 is the unit U+0009 then a NUL.
    EXPECT_EQ(RegistryDataAsText(Dword(9)), L"\t");
    EXPECT_EQ(RegistryDataAsText(Dword(0x00420041)), L"AB");
}

TEST(RegistryText, AFullBufferWithoutTerminatorIsReadWholeAndNoFurther) {
    Bytes data = Utf16(std::u16string(kRegistryDataCapacity / 2, u'x'), false);
    ASSERT_EQ(data.size(), 4096u);
    EXPECT_EQ(RegistryDataAsText(data), std::wstring(2048, L'x'));

    // Bytes beyond the buffer's capacity never reach the text.
    data.insert(data.end(), {'y', 0, 'z', 0});
    EXPECT_EQ(RegistryDataAsText(data), std::wstring(2048, L'x'));
}

// --- Numbers

TEST(RegistryNumber, DwordIsReadLittleEndian) {
    EXPECT_EQ(RegistryDataAsNumber(Dword(9)), 9);
    EXPECT_EQ(RegistryDataAsNumber(Dword(0x01020304)), 0x01020304);
}

TEST(RegistryNumber, IsSigned) {
    EXPECT_EQ(RegistryDataAsNumber(Dword(0xFFFFFFFF)), -1);
    EXPECT_EQ(RegistryDataAsNumber(Dword(0x80000000)), INT32_MIN);
}

TEST(RegistryNumber, OnlyTheFirstFourBytesCount) {
    EXPECT_EQ(RegistryDataAsNumber(Bytes{1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}), 1);
}

TEST(RegistryNumber, MissingBytesOfAShortValueAreZero) {
    EXPECT_EQ(RegistryDataAsNumber({}), 0);
    EXPECT_EQ(RegistryDataAsNumber(Bytes{7}), 7);
    EXPECT_EQ(RegistryDataAsNumber(Bytes{0x34, 0x12}), 0x1234);
    EXPECT_EQ(RegistryDataAsNumber(Bytes{0xFF, 0xFF, 0xFF}), 0x00FFFFFF);
}

TEST(RegistryNumber, ANumberStoredAsAStringGivesItsFirstBytes) {
    // "3" is 33 00 then the terminator 00 00.
    EXPECT_EQ(RegistryDataAsNumber(Utf16(u"3")), 0x33);
    // "12" is 31 00 32 00.
    EXPECT_EQ(RegistryDataAsNumber(Utf16(u"12")), 0x00320031);
}

// --- Lines

TEST(InstallationValues, AreReadInTheReportedOrder) {
    std::vector<std::wstring_view> names;
    for (const InstallationValue& value : kInstallationValues) names.push_back(value.name);
    EXPECT_EQ(names, (std::vector<std::wstring_view>{L"InstallLocation", L"VersionMajor", L"VersionMinor",
                                                     L"VersionRevision", L"VersionBuildReleaseRevision",
                                                     L"VersionBuild", L"InstalledComponents"}));
    EXPECT_EQ(kInstallLocationValue, L"InstallLocation");
}

TEST(InstallationValues, StringValuesUseText) {
    EXPECT_EQ(Line(L"InstallLocation", Utf16(u"D:\\Suite")), L"\tInstallLocation: D:\\Suite\n");
    EXPECT_EQ(Line(L"VersionBuild", Utf16(u"1042")), L"\tVersionBuild: 1042\n");
    EXPECT_EQ(Line(L"InstalledComponents", Utf16(u"Core;Runner")), L"\tInstalledComponents: Core;Runner\n");
    EXPECT_EQ(Line(L"InstallLocation", {}), L"\tInstallLocation: \n");
}

TEST(InstallationValues, NumberValuesUseTheFirstFourBytes) {
    EXPECT_EQ(Line(L"VersionMajor", Dword(9)), L"\tVersionMajor: 9\n");
    EXPECT_EQ(Line(L"VersionMinor", Dword(3)), L"\tVersionMinor: 3\n");
    EXPECT_EQ(Line(L"VersionRevision", Dword(0xFFFFFFFF)), L"\tVersionRevision: -1\n");
    EXPECT_EQ(Line(L"VersionBuildReleaseRevision", Dword(1042)), L"\tVersionBuildReleaseRevision: 1042\n");
}

TEST(InstallationValues, ANumberStoredAsAStringPrintsItsBytes) {
    EXPECT_EQ(Line(L"VersionMinor", Utf16(u"3")), L"\tVersionMinor: 51\n");
    EXPECT_EQ(Line(L"VersionRevision", Utf16(u"12")), L"\tVersionRevision: 3276849\n");
}

TEST(InstallationValues, AStringStoredAsANumberPrintsItsUnits) {
    EXPECT_EQ(Line(L"VersionBuild", Dword(0x00420041)), L"\tVersionBuild: AB\n");
}

TEST(ProductIdLine, ShowsTheTextOfTheData) {
    EXPECT_EQ(FormatProductIdLine(Utf16(u"12345-oem-0000001-54321")), L"\tid: 12345-oem-0000001-54321\n");
    EXPECT_EQ(FormatProductIdLine({}), L"\tid: \n");
}
