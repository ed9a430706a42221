"""Tests of the exporter as a process: its pages, its end, and what it does where the platform or clients misbehave."""

import concurrent.futures
import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import threading
import time
from urllib.parse import urlsplit

import pytest
from exporting import COMMAND, HERE, environment_of, exporting
from prometheus_client.openmetrics.parser import text_string_to_metric_families as openmetrics_families
from prometheus_client.parser import text_string_to_metric_families as text_families


@pytest.fixture(scope="module")
def environment(build, root):
    return environment_of(build, root)


@pytest.fixture(scope="module")
def exporter(environment):
    with exporting(environment) as each:
        yield each


@pytest.fixture
def misbehaving(build, root, tmp_path):
    """(exporter, a function that says how its platform misbehaves from the next sweep on)."""
    file = tmp_path / "misbehaviour"

    def say(**wanted):
        partial = tmp_path / "partial"
        partial.write_text(json.dumps(wanted))
        os.replace(partial, file)

    say()
    command = (os.path.join(HERE, "misbehaving.py"),)
    with exporting(environment_of(build, root, MISBEHAVIOUR=str(file)), command=command) as each:
        yield each, say


def test_text_form(exporter):
    status, content_type, text = exporter.get()
    assert (status, content_type) == (200, "text/plain; version=0.0.4; charset=utf-8")
    names = {family.name for family in text_families(text)}
    assert {"qdp_up", "qdp_port_packets", "qdp_switch_info", "process_cpu_seconds"} <= names


def test_openmetrics_form(exporter):
    status, content_type, text = exporter.get(Accept="application/openmetrics-text; version=1.0.0")
    assert status == 200 and content_type.startswith("application/openmetrics-text")
    families = {family.name: family for family in openmetrics_families(text)}
    assert families["qdp_switch_mtu_bytes"].unit == "bytes"
    assert families["qdp_port_packets"].type == "counter"


def test_promtool_finds_nothing(exporter):
    text = exporter.get()[2]
    done = subprocess.run(
        ["promtool", "check", "metrics"],
        input=text,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        universal_newlines=True,
    )
    assert (done.returncode, done.stdout) == (0, "")


def test_other_pages(exporter):
    assert exporter.get("/-/healthy")[0] == 200
    status, content_type, text = exporter.get("/")
    assert status == 200 and content_type.startswith("text/html") and 'href="/metrics"' in text
    assert exporter.get("/nothing")[0] == 404


def test_answers_are_used_again_for_a_second(exporter):
    name = 'qdp_port_packets_total{switch="0",port="0",direction="rx",path="fast"}'
    first = exporter.fresh()
    assert exporter.series()[name] == first[name]
    assert exporter.fresh()[name] > first[name]


def test_address_in_use(exporter, environment):
    address = urlsplit(exporter.url).netloc
    done = subprocess.run(
        [sys.executable, *COMMAND, "--listen", address],
        env=environment,
        cwd="/",
        stderr=subprocess.PIPE,
        universal_newlines=True,
        timeout=20,
    )
    assert done.returncode == 2
    assert done.stderr == "qdp: cannot listen on {}: Address already in use\n".format(address)


def children_of(process):
    line = ["ps", "-o", "pid=", "--ppid", str(process.pid)]
    return subprocess.run(line, stdout=subprocess.PIPE, universal_newlines=True).stdout.split()


@pytest.mark.parametrize("ending", [signal.SIGTERM, signal.SIGINT])
def test_signal_ends_exporter_and_reader_within_a_second(environment, ending):
    with exporting(environment) as each:
        each.get()
        children = children_of(each.process)
        assert len(children) == 1
        start = time.monotonic()
        each.process.send_signal(ending)
        assert each.process.wait(5) == 0
        assert time.monotonic() - start < 1
        assert not os.path.exists("/proc/" + children[0])
        assert each.process.stderr.read() == ""


def test_refusing_platform(misbehaving):
    exporter, say = misbehaving
    assert exporter.series()["qdp_up"] == 1
    say(fail=["Qdp_Get_Switch_List"])
    series = exporter.fresh()
    assert series["qdp_up"] == 0
    assert series['qdp_collector_success{collector="switches"}'] == 0
    assert series['qdp_call_failures_total{method="ListSwitches"}'] == 1
    assert series["qdp_reader_restarts_total"] == 0
    say()
    series = exporter.fresh()
    assert series["qdp_up"] == 1
    assert series['qdp_call_failures_total{method="ListSwitches"}'] == 1


def test_host_without_a_smartnic_does_not_report_its_collectors(misbehaving):
    exporter, say = misbehaving
    say(fail=["Qdp_P4AppGet", "Qdp_P4UKLatencyDump"])
    series = exporter.series()
    assert 'qdp_collector_success{collector="nic"}' not in series
    say()
    assert exporter.fresh()['qdp_collector_success{collector="nic"}'] == 1
    say(fail=["Qdp_P4AppGet"])
    assert exporter.fresh()['qdp_collector_success{collector="nic"}'] == 0  # it was there before


def test_hanging_call_ends_with_the_scraper_s_time(misbehaving):
    exporter, say = misbehaving
    before = exporter.series()
    say(delay={"Qdp_Get_Uplink_Stats": 60})
    time.sleep(1.05)
    start = time.monotonic()
    series = exporter.series(X_Prometheus_Scrape_Timeout_Seconds="2")
    assert 1 < time.monotonic() - start < 5
    assert series["qdp_up"] == 1  # its switches were answered for
    assert series['qdp_collector_success{collector="lcores"}'] == 1
    assert series['qdp_collector_success{collector="uplinks"}'] == 0
    assert series['qdp_collector_success{collector="ports"}'] == 0
    assert series["qdp_reader_restarts_total"] == 1
    say()
    after = exporter.fresh()
    assert after['qdp_collector_success{collector="uplinks"}'] == 1
    hits = 'qdp_lcore_lookup_hits_total{switch="0",lcore="0",source="cache"}'
    assert after[hits] >= before[hits]  # the next reading process counts on


def test_health_page_answers_while_the_platform_hangs(misbehaving):
    exporter, say = misbehaving
    say(delay={"Qdp_Get_Switch_List": 60})
    scrape = threading.Thread(target=exporter.series, kwargs={"X_Prometheus_Scrape_Timeout_Seconds": "3"})
    scrape.start()
    start = time.monotonic()
    assert exporter.get("/-/healthy")[0] == 200
    assert time.monotonic() - start < 1
    scrape.join()


def test_signal_ends_exporter_while_the_platform_hangs(misbehaving):
    exporter, say = misbehaving
    say(delay={"Qdp_Get_Switch_List": 60})
    client = connection(exporter)
    client.sendall(b"GET /metrics HTTP/1.1\r\n\r\n")
    deadline = time.monotonic() + 20
    while not (children := children_of(exporter.process)) and time.monotonic() < deadline:
        time.sleep(0.05)
    time.sleep(0.5)
    start = time.monotonic()
    exporter.process.send_signal(signal.SIGTERM)
    assert exporter.process.wait(5) == 0
    assert time.monotonic() - start < 1
    assert len(children) == 1 and not os.path.exists("/proc/" + children[0])
    client.close()


def test_slow_platform_answers_within_the_scraper_s_time(misbehaving):
    """Each call answers late and none hangs: what was read in time is served."""
    exporter, say = misbehaving
    assert exporter.series()['qdp_collector_success{collector="ports"}'] == 1
    say(delay={"Qdp_Get_Port_Stats": 0.2})
    time.sleep(1.05)
    start = time.monotonic()
    series = exporter.series(X_Prometheus_Scrape_Timeout_Seconds="3")
    assert time.monotonic() - start < 6
    assert (series["qdp_up"], series["qdp_reader_restarts_total"]) == (1, 1)
    assert series['qdp_collector_success{collector="uplinks"}'] == 1
    assert series['qdp_collector_success{collector="ports"}'] == 0


def test_reader_that_dies_is_replaced(misbehaving):
    exporter, say = misbehaving
    say(exit=True)
    series = exporter.series()
    assert (series["qdp_up"], series["qdp_reader_restarts_total"]) == (0, 1)
    say()
    assert exporter.fresh()["qdp_up"] == 1


def connection(exporter):
    parts = urlsplit(exporter.url)
    return socket.create_connection((parts.hostname, parts.port), timeout=10)


def test_garbage_slow_and_many_clients_cost_the_others_nothing(exporter):
    held = []
    for content in [
        b"\0\xff" * 5000,
        b"GET",
        b"GET /metrics HTTP/1.1\r\nX: " + b"a" * 70000,
        b"POST / HTTP/1.1\r\n\r\n",
    ]:
        client = connection(exporter)
        client.sendall(content)
        held.append(client)
    held += [connection(exporter) for _ in range(20)]
    assert exporter.get("/-/healthy")[0] == 200
    for client in held:
        client.close()
    with concurrent.futures.ThreadPoolExecutor(16) as pool:
        pages = list(pool.map(lambda _: exporter.get("/-/healthy")[0], range(200)))
    assert set(pages) == {200}


def threads_of(process):
    return len(os.listdir("/proc/{}/task".format(process.pid)))


def test_threads_are_bounded(environment):
    with exporting(environment) as each:
        clients = [connection(each) for _ in range(100)]
        time.sleep(0.5)
        assert threads_of(each.process) <= 40
        for client in clients:
            client.close()
        deadline = time.monotonic() + 10
        while threads_of(each.process) > 3 and time.monotonic() < deadline:
            time.sleep(0.1)
        assert each.get("/-/healthy")[0] == 200


def test_textfile_is_whole_and_replaced(environment, tmp_path):
    for _ in range(2):
        subprocess.run(
            [sys.executable, *COMMAND, "--textfile", str(tmp_path)],
            env=environment,
            cwd="/",
            check=True,
            timeout=30,
        )
        assert [file.name for file in tmp_path.iterdir()] == ["qdp.prom"]
        file = tmp_path / "qdp.prom"
        assert "qdp_up 1\n" in file.read_text() and oct(file.stat().st_mode)[-3:] == "644"


@pytest.mark.parametrize(
    "arguments, message",
    [
        (["--textfile", "/nowhere"], "there is no folder /nowhere; create it first"),
        (["--textfile", "/dev/null"], "there is no folder /dev/null; create it first"),
    ],
)
def test_textfile_that_cannot_be_written(environment, arguments, message):
    done = subprocess.run(
        [sys.executable, *COMMAND, *arguments],
        env=environment,
        cwd="/",
        stderr=subprocess.PIPE,
        universal_newlines=True,
        timeout=30,
    )
    assert (done.returncode, done.stderr) == (2, "qdp: {}\n".format(message))


@pytest.mark.parametrize(
    "arguments, message",
    [
        (["--listen", "here"], "argument --listen: invalid address value: 'here'"),
        (["--include", "("], "argument --include: invalid pattern value: '('"),
        (["--listen", "127.0.0.1:0", "--textfile", "."], "--listen and --textfile exclude each other"),
    ],
)
def test_wrong_command_line(environment, arguments, message):
    done = subprocess.run(
        [sys.executable, *COMMAND, *arguments],
        env=environment,
        cwd="/",
        stderr=subprocess.PIPE,
        universal_newlines=True,
        timeout=30,
    )
    assert done.returncode == 1
    assert done.stderr.startswith("qdp: " + message)


def test_promtool_is_there():
    assert shutil.which("promtool"), "script/setup test installs prometheus"
