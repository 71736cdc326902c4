#!/usr/bin/env bash
# Tables that generators make stand in the tree as they are made.
set -eu
cd "$(dirname "$0")/.."
diff <(python3 tools/make_tone_tables.py) src/stages/tone_tables.cpp
diff <(python3 tools/make_weight_source.py) src/stages/weight_source.cpp
