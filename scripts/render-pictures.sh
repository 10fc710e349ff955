#!/usr/bin/env bash
# Renders the desktop's pictures from their SVG sources in data/artwork/ to
# the files the shell loads from data/Images/: the toolbar and navigator
# buttons as GIF (with a transparent colour) or JPEG, and the bars'
# background as JPEG.
#
# Needs these Debian packages:
#   librsvg2-bin  - rsvg-convert, draws each SVG to a PNG with alpha
#   python3-pil   - Pillow for /usr/bin/python3, turns the PNG into GIF or JPEG
# Install them with:
#   apt-get install --no-install-recommends librsvg2-bin python3-pil
#
# Usage: scripts/render-pictures.sh
# Overwrites the eight files in data/Images/; run it again after changing an
# SVG and commit both.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
src="$root/data/artwork"
out="$root/data/Images"
python=/usr/bin/python3

command -v rsvg-convert >/dev/null ||
  { echo "render-pictures: rsvg-convert missing (apt-get install librsvg2-bin)" >&2; exit 1; }
"$python" -c 'import PIL' 2>/dev/null ||
  { echo "render-pictures: Pillow missing (apt-get install python3-pil)" >&2; exit 1; }

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$out"

# name, width, height, format. The buttons on the toolbar stand on the left
# end of Background_ToolBar, whose colour there is #f4f6f9: a JPEG button gets
# that as its background, and a GIF's soft edges are blended into it before
# the half-transparent pixels are cut away.
pictures=(
  "btn_Item 16 16 gif"
  "btn_Property 24 24 gif"
  "btn_AddNew 24 24 jpg"
  "btn_FileOpen 24 24 gif"
  "btn_Edit 24 24 gif"
  "btn_Save 24 24 gif"
  "btn_Sync 24 24 gif"
  "Background_ToolBar 800 48 jpg"
)
backdrop="#f4f6f9"

for entry in "${pictures[@]}"; do
  read -r name width height format <<<"$entry"
  rsvg-convert --width "$width" --height "$height" --format png \
    --output "$work/$name.png" "$src/$name.svg"
  "$python" - "$work/$name.png" "$out/$name.$format" "$format" "$backdrop" <<'PY'
import sys
from PIL import Image, ImageColor

source, target, fmt, backdrop = sys.argv[1:5]
rgba = Image.open(source).convert("RGBA")
matte = Image.new("RGBA", rgba.size, ImageColor.getrgb(backdrop) + (255,))
flat = Image.alpha_composite(matte, rgba).convert("RGB")

if fmt == "jpg":
    flat.save(target, "JPEG", quality=95, subsampling=0, optimize=True)
    sys.exit(0)

# GIF: at most 255 colours for the picture, the last index for "transparent".
# A pixel less than half covered becomes transparent; the rest keep their
# colour blended over the backdrop, so edges stay smooth on a light bar.
paletted = flat.quantize(colors=255, method=Image.Quantize.MEDIANCUT, dither=Image.Dither.NONE)
palette = paletted.getpalette()[: 255 * 3]
palette += [0] * (255 * 3 - len(palette))
clear = 255
palette += [255, 0, 255]  # the transparent index's colour, never shown
paletted.putpalette(palette)
alpha = rgba.getchannel("A")
pixels = paletted.load()
coverage = alpha.load()
for y in range(rgba.height):
    for x in range(rgba.width):
        if coverage[x, y] < 128:
            pixels[x, y] = clear
paletted.save(target, "GIF", transparency=clear, optimize=False)
PY
  echo "render-pictures: $name.$format"
done
