// A parameter block (LumenveilInfo, or an effect built on it) with every
// control on one property page, each with its widgets and a property of its own;
// and what an overlay draws, primitive by primitive.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "generic/library/LumenveilInfo.h"
#include "hostsdk/CDSBasePropertyPage.h"
#include "hostsdk/gl.h"

// A drawn primitive: its mode, vertices, and the colour in force.
struct Primitive {
    GLenum mode;
    std::vector<std::pair<float, float>> points;
    std::array<float, 4> colour;
};

// What `item.Draw()` draws on `surface`, made current for the call.
template <class Item> std::vector<Primitive> drawnBy(Item& item, DrawingSurface& surface)
{
    surface.calls.clear();
    drawingMakeCurrent(&surface);
    item.Draw();
    drawingMakeCurrent(nullptr);
    std::vector<Primitive> drawn;
    std::array<float, 4> colour = {0, 0, 0, 0};
    for (const DrawCall& call : surface.calls)
        if (call.kind == DrawCall::COLOUR)
            std::copy(call.v, call.v + 4, colour.begin());
        else if (call.kind == DrawCall::BEGIN)
            drawn.push_back({call.mode, {}, colour});
        else if (call.kind == DrawCall::VERTEX)
            drawn.back().points.emplace_back(call.v[0], call.v[1]);
    return drawn;
}

// The centre of a handle's square.
inline std::pair<float, float> quadCentre(const Primitive& quad)
{
    return {(quad.points[0].first + quad.points[2].first) / 2, (quad.points[0].second + quad.points[2].second) / 2};
}

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
