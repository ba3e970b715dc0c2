#!/bin/sh
# mutt_open.sh FILE: opens an mbox read-only with mutt on a pseudo-terminal and quits (no configuration, no header cache).
mkdir -p "$HOME/Mail"
exec script -qec "mutt -n -F /dev/null -R -f $1 -e 'set sort=mailbox-order move=no quit=yes header_cache=\"\"' -e 'push <exit>'" \
    /dev/null < /dev/null > /dev/null
