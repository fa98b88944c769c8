# For scenarios, to be sourced: each check prints one line, "ok NAME" or "FAILED NAME".

gadget=$H8_SOURCE_DIR/tests/system/gadget
sequencer=/proc/asound/seq/clients
failures=0

check() { # NAME COMMAND...
  local name=$1
  shift
  if "$@"; then
    echo "ok $name"
  else
    echo "FAILED $name"
    failures=$((failures + 1))
  fi
}

# The last command of a scenario: its exit status tells whether all was well.
all_was_well() {
  [[ $failures -eq 0 ]]
}

# True as soon as the command is, false after 20 s.
within_patience() { # COMMAND...
  local deadline=$((SECONDS + 20))
  until "$@"; do
    [[ $SECONDS -lt $deadline ]] || return 1
    sleep 0.1
  done
}

ports_named() { # PORT_NAME
  grep -c "^ *Port .*\"$1\"" "$sequencer"
}

# The number of the sequencer client with that name, the first of several.
client_named() { # CLIENT_NAME
  sed -n "s/^Client *\([0-9]*\) : \"$1\".*/\1/p" "$sequencer" | head -n 1
}
