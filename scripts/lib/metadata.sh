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

# metadata_objections FILE: nothing if there are none, not even a hint.
metadata_objections() {
  {
    appstreamcli validate --no-net --pedantic "$1" || echo "E: appstreamcli ends with $?"
    appstream-util validate --nonet "$1" || echo "E: appstream-util ends with $?"
    appstream-util validate-strict --nonet "$1" || true
  } 2>&1 | objections_in
}

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
