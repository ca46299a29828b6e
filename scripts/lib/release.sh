# shellcheck shell=bash
# The parts of a release beside the packages. Source it after common.sh and metadata.sh.
#
# Environment variable:
#   QUARN_SIGNING_KEY=KEY   the key of gpg that signs the list of checksums; without it nothing is signed

GENERATED=$TOP/build/release/generated
# What cmake/QuarnGuide.cmake takes where it cannot make the page.
GUIDE_BODY=guide.body.html

# release_file KIND: the name of one of the files, such as release_file setup.exe.
release_file() { echo "quarn-$(identity release VERSION)-$1"; }

# make_source REPOSITORY FOLDER [COMMIT]: the source of the commit, with the guide's page for systems that cannot make
# it. The same commit gives the same bytes, whatever the user has configured: the files carry the time of the commit,
# and the packer adds neither a name nor a time.
make_source() {
  local name made=$2.page commit=${3:-HEAD}
  name=quarn-$(identity release VERSION)
  rm -rf "$made"
  mkdir -p "$made"
  git -C "$1" show "$commit:docs/guide.md" >"$made/guide.md"
  cmake "-DTEXT=$made/guide.md" "-DBODY=$made/$GUIDE_BODY" -P cmake/QuarnGuide.cmake
  # As git stores files that are not programs.
  chmod 644 "$made/$GUIDE_BODY"
  git -C "$1" -c tar.umask=0022 -c core.autocrlf=false -c core.eol=lf -c core.attributesFile=/dev/null archive \
    --format=tar --prefix="$name/packaging/guide/" --add-file="$made/$GUIDE_BODY" --prefix="$name/" "$commit" |
    gzip --best --no-name >"$2/$name-source.tar.gz"
  rm -r "$made"
}

sum_of() { sha256sum "$1" | cut -d ' ' -f 1; }

# fill_in_manifest FOLDER FILE PLACE NAME...: copies these manifests with the checksum of the release's file in the
# place, if there is this file.
fill_in_manifest() {
  local folder=$1 file=$2 place=$3 name sum
  shift 3
  [[ -f $folder/$file ]] || return 0
  sum=$(sum_of "$folder/$file")
  # As winget's own tools write it.
  if [[ $place == SETUP ]]; then sum=${sum^^}; fi
  for name in "$@"; do
    mkdir -p "$folder/manifests/$(dirname "$name")"
    sed "s/@QUARN_${place}_SHA256@/$sum/" "$GENERATED/manifests/$name" >"$folder/manifests/$name"
  done
}

make_manifests() {
  local names
  mapfile -t names < <(cd "$GENERATED/manifests" && find winget -type f | sort)
  fill_in_manifest "$1" "$(release_file setup.exe)" SETUP "${names[@]}"
  fill_in_manifest "$1" "$(release_file windows.zip)" ZIP scoop/quarn.json
  mapfile -t names < <(cd "$GENERATED/manifests" && find flatpak -type f | sort)
  fill_in_manifest "$1" "$(release_file source.tar.gz)" SOURCE "${names[@]}"
}

# The pictures that the metadata for software centres name.
add_pictures() {
  local picture
  mkdir -p "$1/images"
  while read -r picture; do
    cp "docs/images/$picture" "$1/images"
  done < <(sed -n 's:.*<image[^>]*>.*/images/\(.*\)</image>:\1:p' "$GENERATED"/linux/*.metainfo.xml)
}

sign() {
  if [[ -z ${QUARN_SIGNING_KEY:-} ]]; then
    echo "not signed: QUARN_SIGNING_KEY names no key"
    return
  fi
  gpg --batch --yes --armor --local-user "$QUARN_SIGNING_KEY" --output "$1/SHA256SUMS.asc" --detach-sign "$1/SHA256SUMS"
  echo "signed by $QUARN_SIGNING_KEY"
}

# check_signature FOLDER: of the list of checksums, if it has one.
check_signature() {
  local said
  [[ -f $1/SHA256SUMS.asc ]] || return 0
  said=$(LC_ALL=C.UTF-8 gpg --batch --verify "$1/SHA256SUMS.asc" "$1/SHA256SUMS" 2>&1) || {
    echo "the signature is not valid: $(sed -n 's,^gpg: ,,p' <<<"$said" | tail -n 1)"
    return 1
  }
}

# check_release FOLDER: prints what does not fit.
check_release() {
  local manifest objections
  PYTHONDONTWRITEBYTECODE=1 python3 scripts/lib/check_release.py "$GENERATED" "$1" || return
  for manifest in "$1"/manifests/flatpak/*.yaml; do
    [[ -f $manifest ]] || continue
    objections=$(manifest_objections "$manifest")
    [[ -z $objections ]] || {
      echo "$objections"
      return 1
    }
  done
  check_signature "$1"
}

# write_checksums FOLDER: of all other files, in the same order in every locale.
write_checksums() {
  local sums
  sums=$(cd "$1" && find . -type f ! -name 'SHA256SUMS*' -printf '%P\0' | LC_ALL=C sort --zero-terminated |
    xargs -0 sha256sum)
  echo "$sums" >"$1/SHA256SUMS"
}

# complete_release FOLDER: adds to the packages what describes them, and checks all of it.
complete_release() {
  headline "Manifests, parts, checksums"
  cp LICENSE "$1/LICENSE.txt"
  add_pictures "$1"
  make_manifests "$1"
  PYTHONDONTWRITEBYTECODE=1 python3 scripts/lib/sbom.py "$GENERATED/identity.nsh" "$1"
  write_checksums "$1"
  find "$1" -type f -exec chmod 644 {} +
  sign "$1"
  check_release "$1" || fail "the files of the release do not fit each other"
  echo "the files fit each other"
}
