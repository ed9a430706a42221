"""`python3 -m qdp.exporter`: the exporter as `qdp exporter` starts it."""

import argparse
import sys

try:
    from . import main
except ImportError as error:
    if error.name != "prometheus_client":
        raise
    sys.exit("qdp exporter: python3-prometheus-client is missing; install it with apt or pip")


REFUSED = 2  # exit code: what was asked cannot be done


def run():
    parser = argparse.ArgumentParser(prog="qdp exporter", description="Serves the host's health to Prometheus.")
    main.add_options(parser)
    try:
        main.run(parser.parse_args())
    except main.ExporterError as error:
        print("qdp exporter: {}".format(error), file=sys.stderr)
        sys.exit(REFUSED)


run()
