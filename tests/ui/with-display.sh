#!/bin/sh
# Runs a program on an X display of its own. Without Xvfb it fails: a window test that was skipped has shown nothing.
XDG_RUNTIME_DIR="${XDG_RUNTIME_DIR:-$(mktemp -d)}" exec xvfb-run -a -s "-screen 0 2000x1300x24" "$@"
