"""The catalogue of a product service, and the answers to update queries."""

import json
import pathlib
import re

# The values are not escaped, so each ends at the first "&name=" of the next field.
QUERY = re.compile("api_key=(.*?)&key=(.*?)&hardware_id=(.*?)&version=(.*?)&up=([01])", re.DOTALL)

STRINGS = "name", "version", "url"


def fail(message):
    raise SystemExit(f"product_service: {message}")


def check_offer(place, offer):
    has_members = set(STRINGS) <= set(offer) <= {*STRINGS, "percent"}
    if not has_members or any(not isinstance(offer[name], str) for name in STRINGS):
        raise ValueError(f'{place}: it must have the strings "name", "version" and "url", '
                         'and nothing else but "percent"')
    percent = offer.get("percent", 100)
    if type(percent) is not int or not 1 <= percent <= 100:
        raise ValueError(f'{place}: "percent" must be a whole number from 1 to 100')


def load_catalogue(path):
    try:
        text = pathlib.Path(path).read_text("utf-8-sig")
        # The catalogue of the PHP service starts with a line that prevents visitors from reading it.
        catalogue = json.loads(re.sub(r"\A<\?php.*\n", "", text))
        for key, versions in catalogue.items():
            if isinstance(versions, str):
                continue
            for version, offers in versions.items():
                for number, offer in enumerate(offers, 1):
                    check_offer(f'"{key}" version "{version}", offer {number}', offer)
        return catalogue
    except (AttributeError, TypeError, ValueError, RecursionError) as error:
        fail(f"the catalogue {path} is invalid: {error}")


def offer_lists(catalogue):
    return [offers for versions in catalogue.values() if not isinstance(versions, str) for offers in versions.values()]


def first_hidden(percent):
    """Returns the number of the first of 256 computers that does not see an offer for so many percent."""
    return -(-percent * 256 // 100)


def computer_number(computer):
    """Returns one of 256 numbers for a computer, from the start of its identifier, or 255 if it has none."""
    digits = re.match("[0-9a-f]{2}", computer)
    return int(digits[0], 16) if digits else 255


def visible_offers(offers, number):
    """Returns the offers that a computer sees."""
    return [offer for offer in offers if number < first_hidden(offer.get("percent", 100))]


# An answer consists of its name in the log, its body (None closes the connection) and its status.
def refusal(error, *status):
    return f"refusal: {error}", json.dumps({"status": 0, "error": error}).encode(), *status


def offer_list(offers):
    if not offers:
        return "nothing newer (empty body)", b""  # the library expects no empty array
    body = json.dumps([{name: offer[name] for name in STRINGS} for offer in offers],
                      ensure_ascii=False).encode("utf-8", "surrogatepass")
    return "1 offer" if len(offers) == 1 else f"{len(offers)} offers", body


def find_offers(catalogue, query):
    if not query:
        return refusal("malformed query", 400)
    versions = catalogue.get(query[2], "unknown product key")
    if isinstance(versions, str):
        return refusal(versions)
    if query[4] not in versions:
        return "version not in the catalogue (empty body)", b""
    return offer_list(visible_offers(versions[query[4]], computer_number(query[3])))
