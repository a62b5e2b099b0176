"""A home on one machine; `lab/home` is its command line, the tests use it from here."""
