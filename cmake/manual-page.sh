#!/bin/sh
# manual-page.sh SOURCE NAME SECTION DATE VERSION SUMMARY: makes a manual page of a Markdown page and
# writes it to standard output. The page's title becomes the section NAME, text right below it the
# section DESCRIPTION, and every heading moves up by one level.
set -eu
source=$1 name=$2 section=$3 date=$4 version=$5 summary=$6

awk -v name="$name" -v summary="$summary" '
  NR == 1 { print "# NAME\n\n" name " - " summary "\n"; top = 1; next }
  /^```/ { fenced = !fenced }
  !fenced && /^#/ { top = 0; sub(/^#/, ""); if (/^# /) $0 = toupper($0) }
  top && NF { print "# DESCRIPTION\n"; top = 0 }
  { print }
' "$source" |
  lowdown -s -Tman --out-no-smarty --nroff-nolinks -M "title=$name" -M "section=$section" \
    -M "date=$date" -M "source=knob $version" -M "volume=knob" |
  # Code is bold, as manual pages have it; ragged lines suit narrow columns; after a heading, which
  # stands on one line with its request, a paragraph begins by itself.
  sed -e 's/\\fC/\\fB/g' -e 's/\\f(CR/\\fB/g' |
  awk '
    /^\.TH / { print $0 "\n.nh\n.ad l"; next }
    /^\.S[HS]$/ { heading = $0; next }
    heading != "" { print heading " " $0; heading = ""; opened = 1; next }
    opened && /^\.[LP]P$/ { opened = 0; next }
    { opened = 0; print }
  '
