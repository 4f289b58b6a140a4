"""How wide a text of the upgrade center is: an estimate, from the widths of Tahoma's letters."""

import re
import unicodedata

# Pixels at 96 dpi, by text id. The heading (22) has 387, of which a product's name and a dash take some 120.
ROOMS = {12: 67, 22: 267, 23: 238, 24: 88, 38: 67}

# Of Tahoma at 8 points and 96 dpi, rounded to pixels. An accent takes no room of its own.
WIDTHS = {letter: pixels for pixels, letters in {
    2: "'", 3: " ,.ijl", 4: "!\"()-/:;I[\\]ft|rг", 5: "?{}Jcszхзстэ", 6: "$*_`FLPSZЕГЗabdeghknopquvxyабвекнорпуьялийч",
    7: "&ABCEGHKNRTUVXYАВКНПРСТУХЧЭЯмцъ", 8: "#+<=>^~DOQwДЛОЦЪжфю", 9: "MmМФЫшщы", 10: "@WЖШ", 11: "%ЩЮ"}.items()
    for letter in letters}
USUAL_WIDTH, IDEOGRAPH_WIDTH = 6, 12


def width(text):
    """The pixels that a line takes in the window, where "&" marks a key and "&&" is a sign."""
    letters = unicodedata.normalize("NFD", re.sub("&(.)", r"\1", text))
    return sum(0 if unicodedata.combining(letter)
               else IDEOGRAPH_WIDTH if unicodedata.east_asian_width(letter) in "WF"
               else WIDTHS.get(letter, USUAL_WIDTH) for letter in letters)


def width_problems(text_id, text):
    """Says by how much a text is too long for its place; a text without a place of its own has room."""
    pixels, room = width(text), ROOMS.get(text_id)
    if room and pixels > room:
        yield f"the text takes about {pixels} pixels, {pixels - room} more than its place has; its end is cut off"
