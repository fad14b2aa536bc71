#!/usr/bin/python3
"""Prints the ratios that the benchmarks promise, from the JSON files of Google Benchmark, beside their limits."""
import json
import sys

NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def minima(paths):
    """The smallest time of each benchmark's repetitions, in nanoseconds; under "cpu NAME" the processor time."""
    times = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            text = file.read()
            for run in json.loads(text)["benchmarks"] if text else []:  # empty: a filter that matches nothing
                if run["run_type"] == "iteration" and not run.get("error_occurred"):
                    name = run["run_name"].replace("/manual_time", "").replace("/process_time", "").replace("/real_time", "")
                    for key, field in ((name, "real_time"), (f"cpu {name}", "cpu_time")):
                        time = run[field] * NANOSECONDS[run["time_unit"]]
                        times[key] = min(time, times.get(key, time))
    return times


def over(above, below):
    """A row's measure: one benchmark's time over another's."""
    return lambda t: t[above] / t[below]


def beyond_gl(file):
    """The same of loading, after OpenGL's own share has been taken off both."""
    gl = f"loading/{file}/gl"
    return lambda t: (t[f"loading/{file}/ours"] - t[gl]) / (t[f"loading/{file}/library"] - t[gl])


def milliseconds(name):
    return lambda t: t[name] / 1e6


def per_object(name, size, base):
    """How much dearer one object's removal is in a scene of `size` than in one of `base`."""
    return lambda t: t[f"{name}/{size}"] / size / (t[f"{name}/{base}"] / base)


def rows():
    """(title, measure, limit or None)"""
    for n in (1, 20, 1000):
        yield f"framing, {n} frames / the floor", over(f"framing/ours/{n}", f"framing/floor/{n}"), 1.10
    yield "framing, 1,000 frames in buffers of 2,048 bytes / the floor", \
        over("framing/chunks/1000", "framing/floor/1000"), None
    for n in (1, 20, 1000):
        yield f"framing, {n} frames / protobuf's delimited reader", \
            over(f"framing/ours/{n}", f"framing/delimited/{n}"), None
    for phase in ("turning", "coasting"):
        for n in (100, 1000, 10000, 100000):
            yield f"scene update, {n:,} {phase} ships / one array", \
                over(f"update/{phase}/ours/{n}", f"update/{phase}/array/{n}"), 1.5
    for order in ("in_order", "shuffled"):
        title = f"removal of half, {order.replace('_', ' ')}"
        yield f"{title}, 10,000 ships, ms", milliseconds(f"removal/{order}/10000"), 1.0
        yield f"{title}, one of 10,000 / one of 1,000", per_object(f"removal/{order}", 10000, 1000), None
        yield f"{title}, one of 100,000 / one of 1,000", per_object(f"removal/{order}", 100000, 1000), None
    for model in ("fighter", "box"):
        limit = 1.10 if model == "fighter" else None
        yield f"drawing 1,000 ships ({model}) / bare loop", over(f"drawing/{model}_ours", f"drawing/{model}_bare"), limit
        yield f"drawing 1,000 ships ({model}) / bare loop, processor time of all threads", \
            over(f"cpu drawing/{model}_ours", f"cpu drawing/{model}_bare"), None
        yield f"drawing 1,000 ships ({model}) / bare loop with team colours", \
            over(f"drawing/{model}_ours", f"drawing/{model}_coloured"), None
        yield f"drawing 1,000 ships ({model}) / a ship's OpenGL calls alone", \
            over(f"drawing/{model}_ours", f"drawing/{model}_calls"), None
        yield f"drawing 1,000 ships ({model}), share of the cache look-ups", \
            over("drawing/lookups", f"drawing/{model}_ours"), None
    for model in "fighter.obj", "carrier.obj":
        yield f"loading {model}, beyond OpenGL / importer", beyond_gl(model), 1.05
    for texture in "texture-white.png", "skybox.png":
        yield f"loading {texture}, beyond OpenGL / decoder", beyond_gl(texture), 1.02


def main(paths):
    times = minima(paths)
    missed = False
    print(f"{'':72}{'measured':>10}{'limit':>8}")
    for title, measure, limit in rows():
        try:
            value = measure(times)
        except KeyError:
            continue  # left out by a filter, or a benchmark that could not run
        late = limit is not None and value > limit
        missed = missed or late
        print(f"{title:72}{value:10.3f}{'' if limit is None else format(limit, '8.2f')}{'  missed' if late else ''}")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
