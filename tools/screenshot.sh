#!/usr/bin/env bash
# Starts a Windows program on a virtual display and takes a picture of its screen.
# Usage: screenshot.sh PICTURE PROGRAM [ARGUMENT...]; SECONDS_TO_WAIT (default 12) for its windows to stand.
set -eu
. "$(dirname "$0")/environment.sh"
picture=$(realpath -m "$1")
shift
export picture SECONDS_TO_WAIT="${SECONDS_TO_WAIT:-12}"
wine_prefix
timeout 180 xvfb-run -a -s '-screen 0 1280x960x24' bash -c '
  wine explorer /desktop=vexa,1280x960 "$@" >/dev/null 2>&1 &
  sleep "$SECONDS_TO_WAIT"
  import -window root "$picture"
  wineserver -k' -- "$@" || [ -s "$picture" ]
