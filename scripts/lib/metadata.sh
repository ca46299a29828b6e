# shellcheck shell=bash
# What software centres and desktops read: whether their own tools object to it. Source it after common.sh.

METADATA=$TOP/build/release/generated/linux

# Not mistakes: the tools here are older than the tags for the developer and the colours and than two fields of the
# manifest, the domain of the address is one that nobody has, and there are no translations, in the program neither.
KNOWN_OBJECTIONS='^I: [^ ]+ (unknown-tag developer|cid-maybe-not-rdns [^ ]+)$'
KNOWN_OBJECTIONS+='|^• (translations-required +:|tag-invalid +: XML data contains unknown tag$)'
KNOWN_OBJECTIONS+='|Unknown property rename-mime-(file|icons) for type BuilderManifest$'

# Prints the objections that are left, without the line that says how many there were.
objections_in() { grep -E '^(•|[EWIP]:|.*-WARNING)' | grep -vE "$KNOWN_OBJECTIONS" || true; }

# pictures_from FOLDER FILE: the metadata on standard output, with the pictures at the folder's address.
pictures_from() { sed "s#$(identity release DOWNLOADS)/images/#$1/images/#" "$2"; }

# metadata_objections FILE [FOLDER]: nothing if there are none, not even a hint. One tool fetches the pictures and looks
# at their sizes: it gets them from FOLDER/images (default: docs/images), by a web server of this computer.
metadata_objections() (
  place=$(mktemp -d)
  copy=$place/served.metainfo.xml
  python3 -u -m http.server --bind 127.0.0.1 --directory "${2:-$TOP/docs}" 0 >"$place/server.log" 2>&1 &
  server=$!
  trap 'kill "$server"; rm -r "$place"' EXIT
  wait_until 20 "the web server" grep -qs ' port [0-9]' "$place/server.log"
  pictures_from "http://127.0.0.1:$(sed -n 's/.* port \([0-9]*\) .*/\1/p' "$place/server.log")" "$1" >"$copy"
  export no_proxy=127.0.0.1
  {
    appstreamcli validate --no-net --pedantic "$1" || echo "E: appstreamcli ends with $?"
    appstream-util validate "$copy" || echo "E: appstream-util ends with $?"
    appstream-util validate-strict "$copy" || true
  } 2>&1 | objections_in
  # Else nobody has looked at a picture.
  grep -q 'GET /images/' "$place/server.log" || echo "E: no picture was fetched"
)

# manifest_objections FILE: the same for a manifest of Flatpak, by an absolute path. The network is not used. The tool
# leaves a folder where it runs.
manifest_objections() {
  { (cd "$TOP/build" && flatpak-builder --show-manifest "$1") >/dev/null || echo "E: flatpak-builder ends with $?"; } 2>&1 |
    objections_in
}

check_metadata() {
  local file objections
  desktop-file-validate "$METADATA/quarn.desktop" || fail "the desktop entry has mistakes"
  for file in "$METADATA"/*.metainfo.xml; do
    objections=$(metadata_objections "$file")
    [[ -z $objections ]] || fail "the metadata have mistakes:"$'\n'"$objections"
  done
}
