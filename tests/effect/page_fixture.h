// A Lumenveil whose controls sit on a property page with all their widgets.
#pragma once

#include <gtest/gtest.h>

#include "effect/Lumenveil.h"
#include "hostsdk/CDSBasePropertyPage.h"

class PageFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        const uint32_t widgetCounts[] = {2, 1, 2, 2, 2, 2, 2, 1, 1, 4, 2, 2};
        for (int i = 0; i < LumenveilInfo::kControlCount; ++i) {
            ControlVZ* control = fx.controls()[i];
            control->page = &page;
            control->propertyGuid = &guids[i];
            control->timeScale = &rate;
            control->controlId = kFirstWidget[i];
            for (uint32_t w = 0; w < widgetCounts[i]; ++w)
                page.AddControl(kFirstWidget[i] + w);
        }
        fx.centre.propertyGuidY = &guidY;
        page.GetHwndControl(ID_SHAPE)->listEntries = {"Circle", "Ellipse", "Polygon", "Image"};
    }
    void select(int32_t shapeCode, int32_t matchOn)
    {
        page.GetHwndControl(ID_SHAPE)->selection = shapeCode - 1;
        page.GetHwndControl(ID_MATCH_RADII)->checkState = matchOn;
    }
    bool shown(uint32_t id) const { return page.GetHwndControl(id)->shown; }

    static constexpr uint32_t kFirstWidget[LumenveilInfo::kControlCount] = {
        ID_SHAPE, ID_MATCH_RADII, ID_RADIUS_X, ID_RADIUS_Y, ID_SIDES, ID_ROTATION, ID_BRIGHT_EMPHASIS,
        ID_EMPHASISE_ALPHA, ID_EXTREME_PRECISION, ID_CENTRE, ID_RADIUS_PSF1, ID_RADIUS_PSF2};
    GUID guids[LumenveilInfo::kControlCount] = {};
    GUID guidY = {0xC0FFEE, 1, 2, {3}};
    double rate = 25.0;
    CDSBasePropertyPage page;
    Lumenveil fx;

    PageFixture()
    {
        for (int i = 0; i < LumenveilInfo::kControlCount; ++i)
            guids[i].Data1 = 0x1000u + static_cast<uint32_t>(i);
    }
};
