// VARIANT: a tagged value of the few types that properties use.
#pragma once

#include <cstdint>

typedef uint16_t VARTYPE;
enum : VARTYPE { VT_EMPTY = 0, VT_I4 = 3, VT_R8 = 5, VT_BOOL = 11, VT_UI4 = 19, VT_UI8 = 21 };

struct VARIANT {
    VARTYPE vt;
    union {
        int32_t lVal;
        uint32_t ulVal;
        uint64_t ullVal;
        double dblVal;
        int16_t boolVal;  // -1 true, 0 false
    };
};

// Makes the variant empty.
inline void VariantInit(VARIANT* variant)
{
    variant->vt = VT_EMPTY;
    variant->ullVal = 0;
}
// Empties the variant; none of the types held owns memory.
inline int32_t VariantClear(VARIANT* variant)
{
    VariantInit(variant);
    return 0;
}

// A VT_R8 variant holding `number`.
inline VARIANT VariantReal(double number)
{
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_R8;
    v.dblVal = number;
    return v;
}

// A variant's number, whatever its type (0 for VT_EMPTY).
double VariantNumber(const VARIANT& value);
// Sets `value` to `number` in the type `value->vt` asks for (VT_R8 for VT_EMPTY);
// integers are rounded to the nearest, booleans are non-zero.
void VariantFromNumber(VARIANT* value, double number);
// A plain value of a property type, held at `at`: int32_t for VT_I4 and VT_BOOL,
// uint32_t for VT_UI4, uint64_t for VT_UI8, double for VT_R8.
double ReadTypedNumber(const void* at, VARTYPE type);
void WriteTypedNumber(void* at, VARTYPE type, double number);
