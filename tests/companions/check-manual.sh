#!/bin/sh
# check-manual.sh PAGE...: fails when one of the two programs that show manual pages warns of a page,
# or a page has no name or is made of nothing.
status=0
LC_ALL=C.UTF-8 # else a page has to do with ASCII
export LC_ALL
for page; do
  warnings=$(mandoc -T lint -W warning "$page" 2>&1; man --warnings -l "$page" 2>&1 > /dev/null)
  grep -q '^\.SH NAME$' "$page" && [ "$(wc -l < "$page")" -gt 40 ] || warnings="$warnings no page"
  [ -z "$warnings" ] && continue
  printf '%s: %s\n' "$page" "$warnings"
  status=1
done
exit $status
