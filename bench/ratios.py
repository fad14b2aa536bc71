#!/usr/bin/python3
"""Prints the ratios that the benchmarks promise, from the JSON files of Google Benchmark, beside their limits."""
import json
import sys

MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}


def minima(paths):
    """The least time of each benchmark's repetitions in milliseconds; under "cpu NAME" the processor time."""
    times = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            text = file.read()
        for run in json.loads(text)["benchmarks"] if text else []:  # a filter that matches nothing leaves no text
            if run["run_type"] != "iteration" or run.get("error_occurred"):
                continue
            name = run["run_name"].split("/manual_time")[0].split("/process_time")[0].split("/real_time")[0]
            for key, field in ((name, "real_time"), (f"cpu {name}", "cpu_time")):
                time = run[field] * MILLISECONDS[run["time_unit"]]
                times[key] = min(time, times.get(key, time))
    return times


def ratio(above, below, objects_above=1, objects_below=1):
    """One benchmark's time for each of its objects over another's."""
    return lambda times: times[above] / objects_above / (times[below] / objects_below)


def rows():
    """(title, measure, limit or None)"""
    for n in (1, 20, 1000):
        yield (f"framing, {n} frames / protobuf's delimited reader",
               ratio(f"framing/ours/{n}", f"framing/delimited/{n}"), 1.0)
    yield ("framing, 1,000 frames in buffers of 2,048 bytes / in one",
           ratio("framing/buffers/1000", "framing/ours/1000"), 1.2)
    for n, limit in ((1000, 1.5), (10000, 2.5), (100000, None)):  # the last one is beyond the caches
        yield f"scene update, one ship of {n:,} / one of 100", ratio(f"update/{n}", "update/100", n, 100), limit
    for order in ("in_order", "shuffled"):
        name = f"removal/{order}"
        yield (f"removal of half of 10,000 ships, {order.replace('_', ' ')}, ms",
               lambda times, name=name: times[f"{name}/10000"], 2.5)
        yield (f"removal, one of 100,000 / one of 1,000, {order.replace('_', ' ')}",
               ratio(f"{name}/100000", f"{name}/1000", 100, 1), None)
    yield "drawing 1,000 fighters / bare loop", ratio("drawing/scene", "drawing/bare"), 1.10
    yield ("drawing 1,000 fighters / bare loop, processor time of all threads",
           ratio("cpu drawing/scene", "cpu drawing/bare"), None)
    for file, library in (("fighter.obj", "importer"), ("carrier.obj", "importer"),
                          ("texture-white.png", "decoder"), ("skybox.png", "decoder")):
        yield f"loading {file} / the {library} alone", ratio(f"loading/{file}/ours", f"loading/{file}/library"), None


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
