"""Estimates the width of a text in the upgrade center from the widths of Tahoma's characters."""

import re
import unicodedata

# Pixels at 96 DPI, by text id. The heading (22) has 387 pixels, of which a product's name and a dash need about 120.
MAX_WIDTHS = {12: 67, 22: 267, 23: 238, 24: 88, 38: 67}

# Tahoma at 8 points and 96 DPI, rounded to pixels. An accent has no width of its own.
WIDTHS = {character: pixels for pixels, characters in {
    2: "'", 3: " ,.ijl", 4: "!\"()-/:;I[\\]ft|rг", 5: "?{}Jcszхзстэ", 6: "$*_`FLPSZЕГЗabdeghknopquvxyабвекнорпуьялийч",
    7: "&ABCEGHKNRTUVXYАВКНПРСТУХЧЭЯмцъ", 8: "#+<=>^~DOQwДЛОЦЪжфю", 9: "MmМФЫшщы", 10: "@WЖШ", 11: "%ЩЮ"}.items()
    for character in characters}
DEFAULT_WIDTH, IDEOGRAPH_WIDTH = 6, 12


def character_width(character):
    if unicodedata.combining(character):
        return 0
    if unicodedata.east_asian_width(character) in "WF":
        return IDEOGRAPH_WIDTH
    return WIDTHS.get(character, DEFAULT_WIDTH)


def width(text):
    """Returns the width in pixels. "&" marks an access key and has no width; "&&" is shown as an ampersand."""
    characters = unicodedata.normalize("NFD", re.sub("&(.)", r"\1", text))
    return sum(map(character_width, characters))


def width_problems(text_id, text):
    """Reports a text that is wider than its control. Texts in message boxes have no maximum width."""
    pixels, max_width = width(text), MAX_WIDTHS.get(text_id)
    if max_width and pixels > max_width:
        yield f"the text is about {pixels} pixels wide, {pixels - max_width} more than its maximum; its end is cut off"
