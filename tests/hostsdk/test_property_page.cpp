// The property page's widgets and messages, and its own property store.
#include <gtest/gtest.h>

#include "hostsdk/CDSBasePropertyPage.h"
#include "sample_effect.h"

namespace {

using sample::var;
constexpr GUID SIZE = sample::id(1), COUNT = sample::id(2);

TEST(PropertyPage, WidgetsRememberWhatWasDoneToThem)
{
    CDSBasePropertyPage page;
    HWND box = page.AddControl(1001);
    EXPECT_EQ(std::tuple(page.AddControl(1001), page.GetHwndControl(1001), page.GetHwndControl(7)),
              std::tuple(box, box, nullptr));
    EXPECT_EQ(std::tuple(box->id, box->shown, box->enabled, box->selection), std::tuple(1001u, true, true, -1));
    EXPECT_EQ(std::pair(EnableWindow(box, false), box->enabled), std::pair(false, false)) << "was enabled";
    EXPECT_EQ(std::pair(ShowWindow(box, SW_HIDE), box->shown), std::pair(true, false)) << "was shown";
    SendMessage(box, BM_SETCHECK, BST_INDETERMINATE, 0);
    EXPECT_EQ(SendMessage(box, BM_GETCHECK, 0, 0), BST_INDETERMINATE);
    for (const char* entry : {"Polygon", "Circle"})
        EXPECT_EQ(SendMessage(box, CB_INSERTSTRING, 0, reinterpret_cast<LPARAM>(entry)), 0);
    EXPECT_EQ(SendMessage(box, CB_INSERTSTRING, WPARAM(-1), reinterpret_cast<LPARAM>("Image")), 2) << "appended";
    EXPECT_EQ(box->listEntries, (std::vector<std::string>{"Circle", "Polygon", "Image"}));
    SendMessage(box, CB_SETCURSEL, 2, 0);
    EXPECT_EQ(SendMessage(box, CB_GETCURSEL, 0, 0), 2);
    SendMessage(box, CB_RESETCONTENT, 0, 0);
    EXPECT_EQ(std::pair(box->listEntries.size(), SendMessage(box, CB_GETCURSEL, 0, 0)), std::pair(0ul, -1l));
}

TEST(PropertyPage, OwnPropertiesConvertLogAndShowInBoundWidgets)
{
    CDSBasePropertyPage page;
    page.SetProperty(SIZE, var(VT_R8, 12));
    page.SetProperty(COUNT, var(VT_I4, 7));
    VARIANT asInt = var(VT_I4), asReal = var(VT_R8);
    ASSERT_EQ(page.GetAnimatedProperty(SIZE, &asInt, nullptr, -1.0), S_OK);
    ASSERT_EQ(page.GetAnimatedProperty(COUNT, &asReal, nullptr, -1.0), S_OK);
    EXPECT_EQ(std::tuple(asInt.vt, asInt.lVal, asReal.vt, asReal.dblVal),
              std::tuple(VARTYPE(VT_I4), 12, VARTYPE(VT_R8), 7.0));
    EXPECT_EQ(page.GetAnimatedProperty(GUID{}, &asReal, nullptr, -1.0), E_INVALIDARG);
    HWND sizeBox = page.AddControl(10), countBox = page.AddControl(11);
    page.Bind(SIZE, 10);
    page.Bind(COUNT, 11);
    VARIANT value = var(VT_R8, 33.5);
    ASSERT_EQ(page.SetControlValue(10, &value), S_OK);
    page.GetAnimatedProperty(SIZE, &asReal, nullptr, -1.0);
    EXPECT_EQ(std::pair(sizeBox->value.dblVal, asReal.dblVal), std::pair(33.5, 12.0)) << "the property is untouched";
    value = var(VT_R8, 40);
    ASSERT_EQ(page.SetAnimatedProperty(SIZE, &value, nullptr, 1, 2.5), S_OK);
    ASSERT_EQ(page.SetControlFromProperty(SIZE, nullptr), S_OK);
    EXPECT_EQ(std::pair(sizeBox->value.dblVal, countBox->value.vt), std::pair(40.0, VARTYPE(VT_EMPTY)));
    ASSERT_EQ(page.Writes().size(), 1u) << "SetProperty is not a logged write";
    const CDSBasePropertyPage::PropertyWrite& w = page.Writes()[0];
    EXPECT_EQ(std::tuple(w.guid, w.value.dblVal, w.undoStyle, w.time), std::tuple(SIZE, 40.0, 1, 2.5));
}

}  // namespace
