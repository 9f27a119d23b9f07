#!/usr/bin/env bash
# Drives tavo's prompt on a real terminal, a detached tmux session: a form
# is evaluated, Tab completes construct and function names, Ctrl-C drops
# the form being typed and halts a run that would never end, Ctrl-D
# leaves, and a second session recalls the first one's lines with Up.
# Every step waits for the screen to show what it expects, up to a limit.
#
#   Terminal.sh TAVO     (TAVO_TERMINAL_TIMEOUT: seconds a step may take,
#                         60 unless set)
set -euo pipefail
# A tmux of our own, also when the tests run inside another one.
unset TMUX

Tavo=$1
# Short, for the path of tmux's socket has a small limit.
Work=$(mktemp -d "${TMPDIR:-/tmp}/tavo-terminal.XXXXXX")
Home=$Work/home
Socket=$Work/tmux.socket
Session=
Timeout=${TAVO_TERMINAL_TIMEOUT:-60}
mkdir "$Home"

Tmux() { tmux -f /dev/null -S "$Socket" "$@"; }
Cleanup() {
  Tmux kill-server 2>/dev/null || true
  rm -rf "$Work"
}
trap Cleanup EXIT

Screen() { Tmux capture-pane -p -J -S - -t "$Session"; }
Fail() {
  echo "FAILED: $*"
  echo "--- screen ---"
  Screen || true
  exit 1
}
# How many lines of the screen match the extended regular expression.
Count() { Screen | grep -cE -- "$1" || true; }
# Waits until that many lines (1 unless told) match the expression.
WaitFor() {
  local Deadline=$((SECONDS + Timeout))
  until [ "$(Count "$1")" -ge "${2:-1}" ]; do
    [ "$SECONDS" -lt "$Deadline" ] || Fail "no ${2:-1} line(s) matching $1"
    sleep 0.1
  done
}
Prompts() { Count '^tavo> '; }
# Sends keys, then waits for one prompt more than there were before.
SendAndPrompt() {
  local Before
  Before=$(Prompts)
  Tmux send-keys -t "$Session" "$@"
  WaitFor '^tavo> ' $((Before + 1))
}
# tavo runs under a shell that writes its exit status down: tmux does not
# always learn how a pane's process ended, nor close its session at once.
# Ctrl-C reaches the terminal's whole foreground group, the shell too,
# which outlives it.
Start() {
  Session=$1
  rm -f "$Work/status"
  Tmux new-session -d -s "$Session" -x 120 -y 50 \
    bash -c 'trap : INT; env HOME="$1" "$2"; echo $? > "$3"' bash "$Home" "$Tavo" "$Work/status"
  WaitFor '^tavo> '
}
# Ctrl-D at an empty prompt: tavo leaves with status 0.
Leave() {
  local Deadline=$((SECONDS + Timeout))
  Tmux send-keys -t "$Session" C-d
  until [ -s "$Work/status" ]; do
    [ "$SECONDS" -lt "$Deadline" ] || Fail "tavo did not leave at Ctrl-D"
    sleep 0.1
  done
  local Status
  Status=$(cat "$Work/status")
  [ "$Status" = 0 ] || Fail "tavo left with status $Status"
}

Start first
SendAndPrompt '(+ 40 2)' Enter
WaitFor '^42$'

# Ctrl-C drops the whole form being typed, its earlier lines too.
Tmux send-keys -t "$Session" '(+ 1' Enter
WaitFor '^  \.\.\.> '
SendAndPrompt '(foo' C-c
SendAndPrompt '(* 6 7)' Enter
WaitFor '^42$' 2

# Tab completes a construct keyword, and a deffunction's name.
Tmux send-keys -t "$Session" '(deftem' Tab
WaitFor '^tavo> \(deftemplate ?$'
SendAndPrompt 'point (slot x))' Enter
SendAndPrompt '(list-deftemplates)' Enter
WaitFor '^point$'
SendAndPrompt '(deffunction twice (?x) (* 2 ?x))' Enter
Tmux send-keys -t "$Session" '(twi' Tab
WaitFor '^tavo> \(twice ?$'
SendAndPrompt '21)' Enter
WaitFor '^42$' 3

# A rule that asserts its fact again for ever: Ctrl-C halts it between two
# firings, so that one tick fact is left, and the prompt comes back.
SendAndPrompt '(defrule again ?f <- (tick ?n) => (retract ?f) (if (= ?n 100) then (printout t "running" crlf)) (assert (tick (+ ?n 1))))' Enter
SendAndPrompt '(assert (tick 0))' Enter
Tmux send-keys -t "$Session" '(run)' Enter
WaitFor '^running$'
SendAndPrompt C-c
SendAndPrompt '(facts)' Enter
WaitFor '^f-[0-9]+ +\(tick [0-9]+\)$'
WaitFor '^For a total of 2 facts\.$'
Leave

[ "$(stat -c %a "$Home/.tavo_history")" = 600 ] || Fail "the history file is readable by others"

# A new session recalls the last line of the former one.
Start second
Tmux send-keys -t "$Session" Up
WaitFor '^tavo> \(facts\)$'
SendAndPrompt Enter
WaitFor '^For a total of 1 facts\.$'
Leave
echo "The prompt edits, completes, interrupts, leaves and remembers as it should"
