#include "host/LumenveilStrings.h"

#include <cstring>

namespace {

struct StringEntry {
    uint32_t id;
    const char* text;
};

// Property strings come in pairs: the name (and short name), then the long name.
const StringEntry kStrings[] = {
    {1, "LumenveilVZ"},       {2, "LumenveilVZ"},       {4, "Interactive Tool"},
    {6, "Overlay"},
    {8, "Input"},             {9, "Spread"},            {10, "VZ Lumenveil"},
    {14, "Shape"},            {15, "Shape"},            {17, "Match Radii"},
    {18, "Match Radii"},      {22, "RadiusX"},          {23, "Radius X"},
    {26, "RadiusY"},          {27, "Radius Y"},         {30, "Sides"},
    {31, "Sides"},            {34, "Rotation"},         {35, "Rotation"},
    {38, "Bright Emphasis"},  {39, "Bright Emphasis"},  {41, "Emphasise Alpha"},
    {42, "Emphasise Alpha"},  {45, "Extreme Precision"}, {46, "Extreme Precision"},
    {52, "CentreX"},          {53, "CentreX"},          {54, "CentreY"},
    {55, "CentreY"},          {58, "RadiusPSF1"},       {59, "Radius PSF1"},
    {62, "RadiusPSF2"},       {63, "Radius PSF2"},      {66, "Linear"},
    {67, "Scene-Linear Render"}, {70, "Highlight Emphasis"}, {71, "Highlight Emphasis"},
    {74, "Highlight Threshold"}, {75, "Highlight Threshold"}, {78, "Engine"},
    {79, "Transform engine"},
    // The depth-of-field effect.
    {100, "Lumenveil Depth"},  {101, "Lumenveil Depth"},  {102, "Depth"},
    {103, "Lumenveil Depth"},
    {104, "Radius Infinity"},  {105, "Radius at Infinity"}, {106, "Use Lens"},
    {107, "Radius from Lens"}, {108, "F-Stop"},           {109, "F-Stop"},
    {110, "Focal Length"},     {111, "Focal Length (mm)"}, {112, "Sensor Width"},
    {113, "Sensor Width (mm)"}, {114, "Depth Unit"},      {115, "Depth Unit (mm)"},
    {116, "Focus"},            {117, "Focus Distance"},   {118, "Max Radius"},
    {119, "Maximum Radius"},   {120, "Depth Kind"},       {121, "Depth Kind"},
    {122, "Layer Spacing"},    {123, "Layer Spacing"},
    {124, "Focus Picker"},
};

}  // namespace

const char* LumenveilStringText(uint32_t id)
{
    for (const StringEntry& entry : kStrings)
        if (entry.id == id)
            return entry.text;
    return nullptr;
}

int LoadStringW(uint32_t id, wchar_t* buffer, int size)
{
    const char* text = LumenveilStringText(id);
    if (!text || !buffer || size < 1)
        return 0;
    int n = 0;
    for (; text[n] && n < size - 1; ++n)
        buffer[n] = static_cast<wchar_t>(static_cast<unsigned char>(text[n]));
    buffer[n] = L'\0';
    return n;
}
