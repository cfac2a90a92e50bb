# SPDX-License-Identifier: GPL-3.0-or-later
# The shell: main window per theme, theme popup, first-run welcome, banner, menu, dialogs.
# Sourced by scripts/screenshots.sh (start, stop, shot, click, $library).
for theme in noir sunrise light; do
  start "$theme" true "$library"
  shot "main-$theme"
  # The theme button: the three dots left of "Import Music".
  click 836 38
  sleep 0.3
  shot "theme-popup-$theme"
  stop
done

# The first-run welcome once its reveal has finished, with and without the
# photograph behind it.
for theme in noir sunrise light; do
  start "$theme" false
  sleep 2.4
  shot "onboarding-$theme"
  stop
  TARNWELL_ONBOARDING_IMAGE_URL="http://127.0.0.1:$port/landscape.jpg" start "$theme" false
  sleep 2.4
  shot "onboarding-photo-$theme"
  stop
done

start noir true "$library"
# A song copied into a watched folder shows the banner once the folder settles.
cp "$library/Orlo/Inland EP/01 Inland.flac" "$library/Orlo/Inland EP/03 Coastline.flac"
for _ in $(seq 60); do grep -q 'banner: "1 new song added"' "$work/log" && break; sleep 0.1; done
sleep 0.5
shot "banner-noir"
click 1021 38 # the menu button
shot "menu-noir"
click 940 82 # "About Tarnwell"
sleep 0.6
shot "about-noir"
click 60 600 # outside the dialog, which closes it
click 1021 38
click 940 113 # "Check for Updates..."
sleep 1.2
shot "update-noir"
click 60 600 # closes the update dialog
click 930 38 # "Import Music"
sleep 0.8
shot "import-dialog-noir"
stop
