#!/bin/sh
# Signs Kestrivane.app from the inside to the outside, each part with its own entitlements.
#
#     sign.sh Kestrivane.app IDENTITY
#
# IDENTITY is the name of a certificate ("Developer ID Application: ..."), or "-" for a signature that
# counts on this machine only. codesign's own --deep is no help: it would give the application's
# entitlements to everything inside.
set -eu
app=$1
identity=$2
here=$(dirname "$0")
sparkle=$app/Contents/Frameworks/Sparkle.framework

sign() {
  if [ "$identity" = - ]; then
    # The hardened runtime loads libraries of its own team only, and such a signature has none.
    codesign --force --sign - "$@"
  else
    codesign --force --timestamp --options runtime --sign "$identity" "$@"
  fi
}

sign "$sparkle/Versions/B/XPCServices/Installer.xpc"
sign --preserve-metadata=entitlements "$sparkle/Versions/B/XPCServices/Downloader.xpc"
sign "$sparkle/Versions/B/Autoupdate"
sign "$sparkle/Versions/B/Updater.app"
sign "$sparkle"
find "$app/Contents" -path "$sparkle" -prune -o -type f -name '*.dylib' -print |
  while IFS= read -r library; do sign "$library"; done
for framework in "$app"/Contents/Frameworks/Qt*.framework; do
  if [ -e "$framework" ]; then sign "$framework"; fi
done
sign --entitlements "$here/ffmpeg.entitlements" "$app/Contents/MacOS/ffmpeg"
sign --entitlements "$here/Kestrivane.entitlements" "$app"
codesign --verify --deep --strict "$app"
