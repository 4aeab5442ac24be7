// The ControlVZ family: the link of one effect parameter to its widgets on the
// property page, its host property and a plain value that the render reads.
//
// The host-side effect fills controlId, valuePointer, propertyGuid and
// timeScale after construction; the property page sets `page` while it is
// open. Every operation copes with a null page: it then works on the stored
// flags and values only.
#pragma once

#include <cstdint>

#include "hostsdk/guid.h"

class CDSBasePropertyPage;

class ControlVZ {
public:
    ControlVZ();
    // Slot 0 and slots 3, 4: empty.
    virtual void Reserved0();
    // Enables or disables the control's widgets; stores the flag.
    virtual void SetDisabled(bool isDisabled);
    // Shows or hides the control's widgets; stores the flag.
    virtual void SetHidden(bool isHidden);
    virtual void Reserved3();
    virtual void Reserved4();

    CDSBasePropertyPage* page;  // the open page, or null
    uint32_t controlId;         // first widget's number; the others follow
    void* valuePointer;         // the host-side effect's stored value
    const GUID* propertyGuid;   // the property's identity
    const double* timeScale;    // divisor from the caller's time to the host's
    uint8_t disabled;
    uint8_t hidden;
    uint8_t ignoreNextChange;   // read by the page's change handlers; set by nothing here
    uint8_t active;             // 1 from construction; read by nothing

protected:
    // Number of widgets, from controlId on.
    virtual int widgetCount() const = 0;
    // The host's time for `time`: -1.0 (now) stays, anything else is divided by
    // *timeScale.
    double hostTime(double time) const;
};

// A whole number read from its animated property.
class IntegerControlVZ : public ControlVZ {
public:
    IntegerControlVZ();
    // The value at `time` (-1.0: now) as the page reads it; without a page,
    // `out` is left alone.
    void GetValue(double time, int32_t* out) const;
    int32_t value;

protected:
    int widgetCount() const override { return 2; }
};

// On or off, read from its check box.
class CheckboxControlVZ : public ControlVZ {
public:
    CheckboxControlVZ();
    // The check box's state (1 checked, 0 otherwise, the indeterminate state
    // included), which `value` keeps; without a page or widget, `value`.
    void GetValue(double time, int32_t* out);
    int32_t value;

protected:
    int widgetCount() const override { return 1; }
};

// A list index plus one, read from its combo box.
class ListControlVZ : public ControlVZ {
public:
    ListControlVZ();
    // The selection plus one (the first entry is 1); without a page or widget,
    // `value`. `value` is not updated.
    void GetValue(double time, int32_t* out) const;
    int32_t value;

protected:
    int widgetCount() const override { return 2; }
};

// A real number read from its animated property.
class FloatControlVZ : public ControlVZ {
public:
    FloatControlVZ();
    void GetValue(double time, double* out) const;
    double value;

protected:
    int widgetCount() const override { return 2; }
};

// A size, as a fraction of the frame width; read as FloatControlVZ.
class SizeControlVZ : public FloatControlVZ {
public:
    SizeControlVZ() = default;
};

// A position: two real numbers, each with its own property.
class PositionControlVZ : public ControlVZ {
public:
    PositionControlVZ();
    void GetValue(double time, double* outX, double* outY) const;
    void* valuePointerY;        // stored value of y; valuePointer holds x
    const GUID* propertyGuidY;  // property of y; propertyGuid is that of x
    double x;
    double y;

protected:
    int widgetCount() const override { return 4; }
};
