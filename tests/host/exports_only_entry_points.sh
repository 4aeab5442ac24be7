#!/bin/sh
# Passes when the module's dynamic symbol table defines the four entry points
# and nothing else.
symbols=$(nm -D --defined-only "$1" | awk '{print $3}' | sort | tr '\n' ' ')
expected="DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer "
if [ "$symbols" != "$expected" ]; then
    echo "exported: $symbols"
    exit 1
fi
