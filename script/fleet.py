"""Measures a fleet in small: N exporters on embedded hosts, one Prometheus, what each costs, and what that means at
large."""

import argparse
import contextlib
import os
import pathlib
import sys
import tempfile
import time
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests"))

from exporting import environment_of, exporting, prometheus  # noqa: E402: the path comes first

TICKS = os.sysconf("SC_CLK_TCK")
FLEETS = (1000, 10000)  # hosts
SCRAPE_INTERVAL = 15  # seconds, of a fleet
BYTES_A_SAMPLE = 1.7  # on Prometheus' disk, compressed; its documentation says 1 to 2
DAYS_KEPT = 15


def options_of():
    parser = argparse.ArgumentParser(prog="script/fleet", description=__doc__)
    parser.add_argument("exporters", metavar="N", type=int, help="how many exporters run")
    parser.add_argument("--seconds", type=int, default=60, help="how long (default: 60)")
    parser.add_argument("--interval", type=int, default=5, help="seconds between two scrapes (default: 5)")
    options = parser.parse_args()
    if options.exporters < 1 or options.seconds < 3 * options.interval:
        parser.error("run at least one exporter, for three intervals or more")
    return options


def family(pid):
    """A process and its children."""
    with open("/proc/{0}/task/{0}/children".format(pid)) as file:
        return [pid] + [child for each in file.read().split() for child in family(int(each))]


def cpu_seconds(pid):
    total = 0
    for each in family(pid):
        with open("/proc/{}/stat".format(each)) as file:
            fields = file.read().rsplit(")", 1)[1].split()
        total += int(fields[11]) + int(fields[12])
    return total / TICKS


def memory(pid):
    """Bytes that belong to a process and its children alone, or their share of what they share."""
    total = 0
    for each in family(pid):
        with open("/proc/{}/smaps_rollup".format(each)) as file:
            total += next(int(line.split()[1]) * 1024 for line in file if line.startswith("Pss:"))
    return total


def value(server, query):
    """The number that a query gives."""
    result = server.ask("/api/v1/query", query=query)["result"]
    return float(result[0]["value"][1]) if result else float("nan")


def measure(options):
    """What was measured, by name."""
    environment = environment_of(ROOT / "build" / "release", ROOT)
    with contextlib.ExitStack() as stack:
        print("Starting {} exporters".format(options.exporters), file=sys.stderr)
        exporters = [stack.enter_context(exporting(environment)) for _ in range(options.exporters)]
        targets = [urllib.parse.urlsplit(each.url).netloc for each in exporters]
        folder = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory()))
        server = stack.enter_context(prometheus(folder, targets, options.interval))
        time.sleep(options.interval)
        processes = [each.process.pid for each in exporters]
        start = [cpu_seconds(pid) for pid in processes], cpu_seconds(server.process.pid)
        for second in range(options.seconds):
            time.sleep(1)
            if second % 10 == 9:
                print("{} of {} seconds".format(second + 1, options.seconds), file=sys.stderr)
        window = "{}s".format(options.seconds)
        return {
            "series": value(server, "avg(scrape_samples_scraped)"),
            "up": value(server, "sum(up)"),
            "scrape_mean": value(server, "avg(avg_over_time(scrape_duration_seconds[%s]))" % window),
            "scrape_worst": value(server, "max(max_over_time(scrape_duration_seconds[%s]))" % window),
            "exporter_cpu": sum(cpu_seconds(pid) - old for pid, old in zip(processes, start[0])) / options.seconds,
            "exporter_memory": sum(map(memory, processes)) / len(processes),
            "prometheus_cpu": (cpu_seconds(server.process.pid) - start[1]) / options.seconds,
            "prometheus_memory": memory(server.process.pid),
        }


def lines(options, found):
    scrapes = options.exporters / options.interval
    samples = found["series"] * scrapes
    yield "{} exporters, scraped every {} s for {} s; {:.0f} up".format(
        options.exporters, options.interval, options.seconds, found["up"]
    )
    yield ""
    yield "  {:<36}{:>12,.0f}".format("series of a host", found["series"])
    yield "  {:<36}{:>12,.0f}".format("samples a second", samples)
    yield "  {:<36}{:>12.1f} ms".format("scrape, mean", found["scrape_mean"] * 1000)
    yield "  {:<36}{:>12.1f} ms".format("scrape, worst", found["scrape_worst"] * 1000)
    yield "  {:<36}{:>12.1f} ms".format("CPU of an exporter, a scrape", found["exporter_cpu"] / scrapes * 1000)
    yield "  {:<36}{:>12.1f} MB".format("memory of an exporter", found["exporter_memory"] / 1e6)
    yield "  {:<36}{:>12.1f} us".format("CPU of Prometheus, a sample", found["prometheus_cpu"] / samples * 1e6)
    yield "  {:<36}{:>12.1f} MB".format("memory of Prometheus", found["prometheus_memory"] / 1e6)
    yield ""
    yield "On paper, scraped every {} s and kept {} days:".format(SCRAPE_INTERVAL, DAYS_KEPT)
    for hosts in FLEETS:
        rate = hosts * found["series"] / SCRAPE_INTERVAL
        disk = rate * BYTES_A_SAMPLE * DAYS_KEPT * 86400
        yield "  {:>6,} hosts: {:>12,.0f} series, {:>9,.0f} samples a second, {:.1f} cores, {:,.0f} GB of disk".format(
            hosts, hosts * found["series"], rate, rate * found["prometheus_cpu"] / samples, disk / 1e9
        )


def main():
    options = options_of()
    print("\n".join(lines(options, measure(options))))


if __name__ == "__main__":
    main()
