#!/bin/sh
# mutt_delete.sh FILE N: deletes message N of an mbox with mutt on a pseudo-terminal (no configuration, no header cache).
mkdir -p "$HOME/Mail"
exec script -qec "mutt -n -F /dev/null -f $1 -e 'set sort=mailbox-order move=no quit=yes delete=yes header_cache=\"\" mark_old=no resolve=no' -e 'push <first-entry>$2<enter><delete-message><sync-mailbox><exit>'" \
    /dev/null < /dev/null > /dev/null
