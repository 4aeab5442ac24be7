// Lumenveil Depth's dialog: the plain page's controls as they are, and the
// depth controls in two columns to their right.
#include <vector>

#include "host/PPG_DepthPage.h"

namespace {

constexpr const char* kFraction = ";class=dsnewnumberctrl;min=0.0;max=500.00;decimals=3";
constexpr const char* kNumber2 = ";class=dsnewnumberctrl;min=0.0;max=500.00;decimals=2";
constexpr const char* kDistance = ";class=dsnewnumberctrl;min=0.0;max=1000000.00;decimals=3";

const DSDialogControl kDepthControls[] = {
    {ID_USE_LENS, "checkbox", "Use Lens", 210, 10, 80, 10},
    {ID_RADIUS_INFINITY, "number", kFraction, 210, 30, 80, 9},
    {ID_RADIUS_INFINITY + 1, "static", "Radius Infinity", 210, 22, 80, 8},
    {ID_F_STOP, "number", kNumber2, 210, 50, 80, 9},
    {ID_F_STOP + 1, "static", "F-Stop", 210, 42, 80, 8},
    {ID_FOCAL_LENGTH, "number", kNumber2, 210, 70, 80, 9},
    {ID_FOCAL_LENGTH + 1, "static", "Focal Length", 210, 62, 80, 8},
    {ID_SENSOR_WIDTH, "number", kNumber2, 210, 90, 80, 9},
    {ID_SENSOR_WIDTH + 1, "static", "Sensor Width", 210, 82, 80, 8},
    {ID_DEPTH_UNIT, "number", kDistance, 210, 110, 80, 9},
    {ID_DEPTH_UNIT + 1, "static", "Depth Unit", 210, 102, 80, 8},
    {ID_DEPTH_KIND, "combobox", "", 310, 18, 80, 9},
    {ID_DEPTH_KIND + 1, "static", "Depth Kind", 310, 10, 80, 8},
    {ID_FOCUS, "number", kDistance, 310, 38, 80, 9},
    {ID_FOCUS + 1, "static", "Focus", 310, 30, 80, 8},
    {ID_MAX_RADIUS, "number", kFraction, 310, 58, 80, 9},
    {ID_MAX_RADIUS + 1, "static", "Max Radius", 310, 50, 80, 8},
    {ID_LAYER_SPACING, "number", kNumber2, 310, 78, 80, 9},
    {ID_LAYER_SPACING + 1, "static", "Layer Spacing", 310, 70, 80, 8},
};
constexpr int32_t kDepthDialogWidth = 400;

// The joined control list, and the template over it.
struct DepthDialog {
    std::vector<DSDialogControl> controls;
    DSDialogTemplate dialog;
    DepthDialog()
    {
        const DSDialogTemplate& plain = PageOneDialog();
        controls.assign(plain.controls, plain.controls + plain.controlCount);
        controls.insert(controls.end(), std::begin(kDepthControls), std::end(kDepthControls));
        dialog = {kDepthDialogWidth, plain.height, plain.font, plain.fontSize, controls.data(),
                  static_cast<int32_t>(controls.size())};
    }
};

}  // namespace

const DSDialogTemplate& DepthPageDialog()
{
    static const DepthDialog depthDialog;
    return depthDialog.dialog;
}
