"""The exporter: a host's health as Prometheus metrics."""
