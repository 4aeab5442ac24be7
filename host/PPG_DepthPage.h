// PPG_DepthPage: Lumenveil Depth's property page. The plain page's aperture
// and emphasis controls, with their bindings, ranges, handlers and Overlay
// button (PPG_PageOne), and beside them the depth controls: Use Lens, which
// shows Radius Infinity when off and the lens values (F-Stop, Focal Length,
// Sensor Width, Depth Unit) when on; Focus, Max Radius, Depth Kind and Layer
// Spacing. Its Overlay button starts the focus picker (DepthIT).
#pragma once

#include <cstdint>

#include "host/PPG_PageOne.h"

// Ids of the depth controls; a number or list control's label is the id after it.
enum DepthPageControl : uint32_t {
    ID_USE_LENS = 70,
    ID_RADIUS_INFINITY = 72,
    ID_F_STOP = 74,
    ID_FOCAL_LENGTH = 76,
    ID_SENSOR_WIDTH = 78,
    ID_DEPTH_UNIT = 80,
    ID_FOCUS = 82,
    ID_MAX_RADIUS = 84,
    ID_DEPTH_KIND = 86,
    ID_LAYER_SPACING = 88,
};
inline constexpr uint32_t IDD_DEPTH_PAGE = 12;

// The page's dialog: the plain page's controls, then the depth controls.
const DSDialogTemplate& DepthPageDialog();

class PPG_DepthPage : public PPG_PageOne {
public:
    PPG_DepthPage();

    HRESULT OpenOn(IUnknown* effect) override;
    CDSPPGControlMap* GetControlMap() override;
    // The plain page's set-up, then the Depth Kind list, the depth controls'
    // ranges from their property definitions, and what Use Lens shows.
    HRESULT OnInitPage() override;
    HRESULT UpdateUI(const GUID* property, void* object, void* params, uint32_t flags) override;

    // Handler of the Use Lens switch.
    void OnUseLensClicked();

    double radiusInfinity;
    int32_t useLens;
    double fStop;
    double focalLength;
    double sensorWidth;
    double depthUnit;
    double focus;
    double maxRadius;
    int32_t depthKind;
    double layerSpacing;

private:
    // Shows Radius Infinity or the lens values, with their labels, by `lens`.
    void showLensControls(bool lens);
};
