"""The fault campaign: hosts of network namespaces, a load, faults by chance, and accounts after each."""
