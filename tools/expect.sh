# Shared by the checks of what is installed: sourced with $root set to the checkout, $scratch to a folder
# for files and $what to what their lines begin with.

# The version in the headers.
version=$(sed -n 's/^#define JX_VERSION_[A-Z]* \([0-9]*\)u$/\1/p' "$root/include/jx/base.h" | paste -sd.)

# expect WHAT WANTED GOT: ends the check when the two differ.
expect() {
  [[ $2 == "$3" ]] || { printf 'FAIL %s: %s: wanted "%s", got "%s"\n' "$what" "$1" "$2" "$3"; exit 1; }
  printf 'OK   %s: %s: %s\n' "$what" "$1" "$3"
}

# silently LOG COMMAND...: shows the output of a command only when it fails, which ends the check.
silently() {
  local log=$1
  shift
  "$@" >"$log" 2>&1 && return
  cat "$log"
  printf 'FAIL %s: %s\n' "$what" "$*"
  exit 1
}

# expect_checked JXFILE: it finds the module that examines its host, which finds nothing.
expect_checked() {
  local counts
  counts=$(JXWEM_MODULE='' "$1" check-host "$scratch" | tail -n 1)
  expect 'findings of "jxfile check-host"' 0 "$(sed -n 's/.* passed, \([0-9]*\) findings.*/\1/p' <<<"$counts")"
}
