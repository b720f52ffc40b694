#!/usr/bin/env python3
"""Fails on an enumerator without a comment, which Doxygen itself lets pass. Reads Doxygen's XML output.

usage: tools/check-enumerators.py FOLDER
"""

import pathlib
import sys
import xml.etree.ElementTree


def text_of(element, name):
    """Return the text of all children of this name, without white space."""
    return "".join("".join(child.itertext()) for child in element.findall(name)).strip()


def undocumented(folder):
    """Yield one message for each enumerator without a comment."""
    for path in sorted(folder.glob("*.xml")):
        for enumeration in xml.etree.ElementTree.parse(path).iter("memberdef"):
            if enumeration.get("kind") != "enum" or enumeration.get("prot") == "private":
                continue
            for value in enumeration.findall("enumvalue"):
                if not text_of(value, "briefdescription") and not text_of(value, "detaileddescription"):
                    place = enumeration.find("location")
                    yield (f"{place.get('file')}:{place.get('line')}: enumerator "
                           f"{value.findtext('name')} is not documented")


def main():
    folder = pathlib.Path(sys.argv[1])
    if not (folder / "index.xml").exists():
        sys.exit(f"{folder} has no XML output of Doxygen")
    messages = sorted(set(undocumented(folder)))
    for message in messages:
        print(message, file=sys.stderr)
    sys.exit(1 if messages else 0)


if __name__ == "__main__":
    main()
