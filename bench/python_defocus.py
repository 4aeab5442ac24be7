#!/usr/bin/env python3
"""Times lumenveil.defocus on a 1920 x 1080 uint16 RGB array against the
effect's own render time for the same engine and values, in one run.

The effect's own time is its Execute, which the module times inside the same
call (Effect.execute_seconds); the call's time is the whole of it: making the
effect, setting its values, handing the array over and back, and the new
array. Each is timed ROUNDS times (default 5) and the medians taken, since a
shared machine's speed drifts: for a new effect each call (defocus, the
kernel built), and for an Effect kept over frames (the kernel kept).

    PYTHONPATH=build/release/python /usr/bin/python3 bench/python_defocus.py [ROUNDS]
"""
import statistics
import sys
import time

import numpy as np

import lumenveil

rounds = int(sys.argv[1]) if len(sys.argv) > 1 else 5
# A hexagon of radius 0.02 (38 px) at bright emphasis 80 on the fast engine,
# as bench/frei0r_frame.sh renders; a frame of gradients and bright points.
values = dict(engine="fast", shape="polygon", radius_x=0.02, sides=6, bright_emphasis=80.0)
y, x = np.mgrid[0:1080, 0:1920]
image = np.stack([x * 34, y * 60, (x + y) * 21], axis=2).astype(np.uint16)
image[::97, ::89] = 65535

fresh, fresh_execute, kept, kept_execute, plain = [], [], [], [], []
fx = lumenveil.Effect(**values)
fx(image)
for _ in range(rounds):
    start = time.perf_counter()
    lumenveil.defocus(image, **values)
    plain.append(time.perf_counter() - start)
    start = time.perf_counter()
    fresh_fx = lumenveil.Effect(**values)
    fresh_fx(image)
    fresh.append(time.perf_counter() - start)
    fresh_execute.append(fresh_fx.execute_seconds)
    start = time.perf_counter()
    fx(image)
    kept.append(time.perf_counter() - start)
    kept_execute.append(fx.execute_seconds)

median = statistics.median
print(f"defocus, 1920 x 1080 uint16 RGB     {median(plain):.3f} s")
for name, call, execute in (("a new effect (defocus)", fresh, fresh_execute), ("an Effect kept", kept, kept_execute)):
    added = median((c - e) / e for c, e in zip(call, execute))
    print(f"{name:24}  call {median(call):.3f} s, Execute {median(execute):.3f} s, "
          f"the module adds {100 * added:.1f}% (median of the rounds)")
