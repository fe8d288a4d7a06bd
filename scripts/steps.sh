# shellcheck shell=bash
# For scripts that take long, to be sourced: tells on standard error which step of how many begins and how long the
# script has run, and at the end that all is done or which step failed. The lines are the same on a terminal and in a
# file.
#
#   steps_of scripts/bench 3
#   step "what the step does" COMMAND...
#
# A script with a trap of its own for EXIT calls `steps_end` first in it. `scripts/steps.mjs` writes the same lines.

steps_of() {
  steps_name=$1
  steps_count=$2
  steps_begun=0
  steps_under_way=
  SECONDS=0
  trap steps_end EXIT
}

steps_elapsed() {
  local seconds=$1
  if [ "$seconds" -ge 3600 ]; then
    printf '%d:%02d:%02d' $((seconds / 3600)) $((seconds / 60 % 60)) $((seconds % 60))
  else
    printf '%d:%02d' $((seconds / 60)) $((seconds % 60))
  fi
}

step() {
  steps_under_way=$1
  steps_begun=$((steps_begun + 1))
  shift
  printf '%s: [%d of %d, %s] %s\n' "$steps_name" "$steps_begun" "$steps_count" "$(steps_elapsed "$SECONDS")" \
    "$steps_under_way" >&2
  "$@"
  steps_under_way=
}

steps_end() {
  local status=$?
  if [ "$status" -eq 0 ]; then
    printf '%s: [done, %s]\n' "$steps_name" "$(steps_elapsed "$SECONDS")" >&2
  elif [ -n "$steps_under_way" ]; then
    printf '%s: [%d of %d, %s] FAILED with status %d: %s\n' "$steps_name" "$steps_begun" "$steps_count" \
      "$(steps_elapsed "$SECONDS")" "$status" "$steps_under_way" >&2
  fi
}
