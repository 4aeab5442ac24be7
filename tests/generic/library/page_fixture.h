// A parameter block (LumenveilInfo, or an effect built on it) with every
// control on one property page, each with its widgets and a property of its own.
#pragma once

#include <gtest/gtest.h>

#include "generic/library/LumenveilInfo.h"
#include "hostsdk/CDSBasePropertyPage.h"

// A page that notes the time each animated read asks for.
struct TimedPage : CDSBasePropertyPage {
    HRESULT GetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, double time) override
    {
        asked = time;
        return CDSBasePropertyPage::GetAnimatedProperty(guid, value, params, time);
    }
    double asked = 0.0;
};

template <class Block>
class ControlsOnAPage : public ::testing::Test {
protected:
    void SetUp() override
    {
        const uint32_t firstWidget[] = {ID_SHAPE, ID_MATCH_RADII, ID_RADIUS_X, ID_RADIUS_Y, ID_SIDES, ID_ROTATION,
                                        ID_BRIGHT_EMPHASIS, ID_EMPHASISE_ALPHA, ID_EXTREME_PRECISION, ID_CENTRE,
                                        ID_RADIUS_PSF1, ID_RADIUS_PSF2};
        const uint32_t widgetCounts[] = {2, 1, 2, 2, 2, 2, 2, 1, 1, 4, 2, 2};
        for (int i = 0; i < LumenveilInfo::kControlCount; ++i) {
            ControlVZ* control = fx.controls()[i];
            guids[i].Data1 = 0x1000u + static_cast<uint32_t>(i);
            control->page = &page;
            control->propertyGuid = &guids[i];
            control->timeScale = &rate;
            control->controlId = firstWidget[i];
            for (uint32_t w = 0; w < widgetCounts[i]; ++w)
                page.AddControl(firstWidget[i] + w);
        }
        fx.centre.propertyGuidY = &guidY;
    }
    void select(int32_t shapeCode, int32_t matchOn)
    {
        page.GetHwndControl(ID_SHAPE)->selection = shapeCode - 1;
        page.GetHwndControl(ID_MATCH_RADII)->checkState = matchOn;
    }
    bool shown(uint32_t id) const { return page.GetHwndControl(id)->shown; }

    GUID guids[LumenveilInfo::kControlCount] = {};
    GUID guidY = {0xC0FFEE, 1, 2, {3}};
    double rate = 25.0;
    TimedPage page;
    Block fx;
};
