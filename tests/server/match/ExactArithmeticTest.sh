#!/bin/sh
# Fails if the rules call a function whose result depends on the C library's version, themselves or through math/.
symbols=$("$1" -uC "$2") || exit 1
inexact='(sin|cos|tan|sincos|asin|acos|atan|atan2|hypot|pow|cbrt|exp|exp2|log|log2|fma|fmod)f?l?'
callers='Quaternion::(FromAxisAngle|FromEuler|Slerp|exponentiation)|General::(gridPoint|getStartingPoint|(red|blue)Start)'
if echo "$symbols" | grep -E "U ($inexact\$|$callers)"; then
    exit 1
fi
