#!/usr/bin/env bash
# Both systems write the same octets for the same message, presentation and extraction.
#   same_octets_test.sh LINUX-TOOL EMULATOR WINDOWS-TOOL EXAMPLES
set -euo pipefail
linux=$1 emulator=$2 windows=$3 examples=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
cp "$examples"/media/{photo.jpg,chime.amr,text.txt} .
mkdir linux windows
on() {  # SYSTEM ARGUMENT...
  local system=$1
  shift
  if [ "$system" = linux ]; then "$linux" "$@"; else "$emulator" "$windows" "$@"; fi
}
cat > show.smil <<'SMIL'
<smil><head><layout><root-layout width="160" height="120"/><region id="a" top="0"/></layout></head>
<!-- carried, not written --><body><par dur="5s"><img src="photo.jpg" region="a" alt="&lt;&#228;&quot;"/>
<audio src="chime.amr"/><seq x="1"/></par></body></smil>
SMIL
for system in linux windows; do
  compose() { on "$system" compose --transaction-id t1 --date 2026-03-29T03:30 -o "$system/$1" "${@:2}"; }
  compose plain.mms --to +358401234567 --subject 'Häää ☃' --text 'Grüße 日本' --priority high
  compose dates.mms --to a@b.example --cc ipv4:10.0.0.1 --expiry 2049-07-01T12:00 --delivery-time 36h \
    --delivery-report yes --read-reply no --visibility hide --class advertisement --text x
  compose latin.mms --to 1234 --charset iso-8859-1 --subject 'Ääkköset' --text 'öljy'
  compose mixed.mms --to 1234 --attach photo.jpg --attach 'chime.amr;name=soi to.amr' --body mixed
  compose slides.mms --to 1234 --slide text='Yksi ä',image=photo.jpg,dur=5s --slide audio=chime.amr
  compose smil.mms --to 1234 --smil show.smil
  on "$system" smil format show.smil > "$system/formatted.smil"
  mkdir "$system/extracted"
  on "$system" extract "$system/slides.mms" "$system/extracted" > /dev/null
  for message in plain dates slides smil; do
    on "$system" show --json - < "$system/$message.mms" > "$system/$message.json"
  done
done
# Extracted texts name the folder that they are in.
sed -i 's#windows#linux#g' windows/extracted/*.smil 2>/dev/null || true
[ "$(find linux -type f | wc -l)" -ge 14 ]
diff -r linux windows
