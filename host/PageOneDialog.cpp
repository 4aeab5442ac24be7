// The page's dialog: ids, classes, texts or number-control set-up strings, and
// places in dialog units.
#include "host/PPG_PageOne.h"

namespace {

constexpr const char* kNumber2 = ";class=dsnewnumberctrl;min=0.0;max=500.00;decimals=2";
constexpr const char* kNumber0 = ";class=dsnewnumberctrl;min=0.0;max=500.00;decimals=0";
constexpr const char* kNumber3 = ";class=dsnewnumberctrl;min=0.0;max=500.00;decimals=3";
constexpr const char* kUnit2 = ";class=dsnewnumberctrl;min=0.0;max=1.00;decimals=2";

const DSDialogControl kControls[] = {
    {12, "combobox", "", 10, 18, 80, 9},
    {13, "static", "Shape", 10, 10, 60, 8},
    {16, "checkbox", "Match Radii", 10, 30, 80, 10},
    {20, "number", kNumber2, 10, 48, 80, 9},
    {21, "static", "RadiusX", 10, 40, 60, 8},
    {24, "number", kNumber2, 10, 68, 80, 9},
    {25, "static", "RadiusY", 10, 60, 60, 8},
    {28, "number", kNumber0, 10, 88, 80, 9},
    {29, "static", "Sides", 10, 80, 60, 8},
    {32, "number", kNumber2, 10, 108, 80, 9},
    {33, "static", "Rotation", 10, 100, 60, 8},
    {36, "number", kNumber2, 10, 128, 80, 9},
    {37, "static", "Bright Emphasis", 10, 120, 60, 8},
    {40, "checkbox", "Emphasise Alpha", 10, 140, 80, 10},
    // At y = 160, the dialog's own height.
    {44, "checkbox", "Extreme Precision", 10, 160, 80, 10},
    {48, "number", kUnit2, 110, 38, 80, 9},
    {50, "static", "CentreX", 110, 30, 60, 8},
    {49, "number", kUnit2, 110, 58, 80, 9},
    {51, "static", "CentreY", 110, 50, 60, 8},
    {56, "number", kNumber3, 110, 78, 80, 9},
    {57, "static", "RadiusPSF1", 110, 70, 60, 8},
    {60, "number", kNumber3, 110, 98, 80, 9},
    {61, "static", "RadiusPSF2", 110, 90, 60, 8},
    {ID_OVERLAY_BUTTON, "button", "Overlay", 150, 0, 40, 8},
};

const DSDialogTemplate kDialog = {190, 160, "Arial", 11, kControls, sizeof kControls / sizeof kControls[0]};

}  // namespace

const DSDialogTemplate& PageOneDialog() { return kDialog; }
