// CDSBasePropertyPage: a property page with widgets by number and the
// properties of the object it inspects.
//
// Widgets remember what was done to them (see window.h). Properties are those
// of the inspected object, through its operator (see SetOperator); without one
// the page holds them itself, by GUID. A write through SetAnimatedProperty is
// also logged with its undo style and time, so that a caller can see when the
// host's property changed.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "hostsdk/guid.h"
#include "hostsdk/hresult.h"
#include "hostsdk/IVWOperator.h"
#include "hostsdk/variant.h"
#include "hostsdk/window.h"

class CDSBasePropertyPage {
public:
    struct PropertyWrite {
        GUID guid;
        VARIANT value;
        int undoStyle;
        double time;
    };

    CDSBasePropertyPage() = default;
    virtual ~CDSBasePropertyPage() = default;
    CDSBasePropertyPage(const CDSBasePropertyPage&) = delete;
    CDSBasePropertyPage& operator=(const CDSBasePropertyPage&) = delete;

    // Makes widget `id` (or returns the one that exists).
    HWND AddControl(uint32_t id);
    // The widget numbered `id`, or null.
    HWND GetHwndControl(uint32_t id) const;

    // The property's value at `time` (-1.0: now) into `value`, converted to the
    // type that `value->vt` asks for (VT_I4 or VT_R8); E_INVALIDARG for an
    // unknown property.
    virtual HRESULT GetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, double time);
    // Writes the property and logs the write.
    virtual HRESULT SetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, int undoStyle, double time);
    // Shows `value` in widget `id` without touching any property.
    HRESULT SetControlValue(uint32_t id, VARIANT* value);
    // Shows the property's value in the widget bound to it (see Bind).
    HRESULT SetControlFromProperty(const GUID& guid, void* params);

    // Reads and writes properties through `object` (not owned) from now on;
    // null returns to the page's own store.
    void SetOperator(IVWOperator* object) { inspected = object; }
    IVWOperator* Operator() const { return inspected; }

    // Sets a property's value in the page's own store, without logging.
    void SetProperty(const GUID& guid, const VARIANT& value);
    // Ties widget `id` to a property, for SetControlFromProperty.
    void Bind(const GUID& guid, uint32_t id);
    const std::vector<PropertyWrite>& Writes() const { return writes; }

private:
    std::map<uint32_t, std::unique_ptr<PageWidget>> widgets;
    std::vector<std::pair<GUID, VARIANT>> properties;
    std::vector<std::pair<GUID, uint32_t>> bindings;
    std::vector<PropertyWrite> writes;
    IVWOperator* inspected = nullptr;

    VARIANT* find(const GUID& guid);
};
