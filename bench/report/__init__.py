"""The report of the benchmarks: reads their JSON, draws and writes one page."""
