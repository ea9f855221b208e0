#!/usr/bin/env python3
"""office_test.py KORVEX: formatted texts go to an office suite and come back from it.

What is written here is opened by the suite and told again as its own XML; what the suite writes is
read here. Skipped, with exit status 77, where the suite is not installed."""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml

KORVEX = str(pathlib.Path(sys.argv[1]).resolve())
del sys.argv[1]
DOCUMENTS = pathlib.Path(__file__).resolve().parent / "documents"
SKIPPED = 77
NAMESPACES = {
    "text": "urn:oasis:names:tc:opendocument:xmlns:text:1.0",
    "table": "urn:oasis:names:tc:opendocument:xmlns:table:1.0",
    "style": "urn:oasis:names:tc:opendocument:xmlns:style:1.0",
    "fo": "urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0",
    "office": "urn:oasis:names:tc:opendocument:xmlns:office:1.0",
    "xlink": "http://www.w3.org/1999/xlink",
}


def name(prefixed):
    prefix, local = prefixed.split(":")
    return f"{{{NAMESPACES[prefix]}}}{local}"


class OfficeDocument:
    """What a person would say of a document that the suite has opened."""

    def __init__(self, path):
        self.root = xml.parse(path).getroot()
        self.body = self.root.find("office:body/office:text", NAMESPACES)
        self.styles = {style.get(name("style:name")): style
                       for style in self.root.iter(name("style:style"))}

    @staticmethod
    def text_of(element):
        if element.tag == name("text:s"):
            inner = " " * int(element.get(name("text:c"), "1"))
        elif element.tag == name("text:line-break"):
            inner = "\n"
        else:
            inner = (element.text or "") + "".join(
                OfficeDocument.text_of(child) + (child.tail or "") for child in element)
        return inner

    def paragraphs(self):
        tags = {name("text:p"), name("text:h")}
        return [each for each in self.body.iter() if each.tag in tags]

    def texts(self):
        return [self.text_of(each) for each in self.paragraphs()]

    def paragraph(self, text):
        return next(each for each in self.paragraphs() if self.text_of(each) == text)

    def properties(self, element):
        """The text properties of the first span of a paragraph, from all its styles."""
        found = {}
        span = element.find(".//text:span", NAMESPACES)
        for each in (element, span):
            chain = []
            style = self.styles.get(each.get(name("text:style-name"))) if each is not None else None
            while style is not None:
                chain.append(style)
                style = self.styles.get(style.get(name("style:parent-style-name")))
            for style in reversed(chain):
                for properties in style.iter(name("style:text-properties")):
                    found.update(properties.attrib)
        return found

    def links(self):
        return {self.text_of(link): link.get(name("xlink:href"))
                for link in self.body.iter(name("text:a"))}

    def list_items(self):
        """(depth, text) of every paragraph in a list; which list is told apart by the top one."""
        found = []

        def walk(element, depth, top):
            for child in element:
                if child.tag == name("text:list"):
                    walk(child, depth + 1, top if depth else child.get(name("text:style-name")))
                elif child.tag in (name("text:list-item"), name("text:list-header")):
                    walk(child, depth, top)
                elif child.tag == name("text:p") and depth:
                    found.append((depth, top, self.text_of(child)))

        walk(self.body, 0, None)
        return found

    def tables(self):
        return [[["\n".join(self.text_of(each) for each in cell.iter(name("text:p")))
                  for cell in row.iter(name("table:table-cell"))]
                 for row in table.iter(name("table:table-row"))]
                for table in self.body.iter(name("table:table"))]

    def column_widths(self):
        """Of the first table, in points."""
        table = next(self.body.iter(name("table:table")))
        widths = []
        for column in table.iter(name("table:table-column")):
            properties = self.styles[column.get(name("table:style-name"))].find(
                "style:table-column-properties", NAMESPACES)
            width = properties.get(name("style:column-width"))
            widths += [float(width.removesuffix("in")) * 72] * int(
                column.get(name("table:number-columns-repeated"), "1"))
        return widths


class OfficeTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="korvex-office-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def korvex(self, *arguments, **options):
        done = subprocess.run([KORVEX, "--data-dir", str(self.folder / "data"), *arguments],
                              capture_output=True, timeout=60, check=False, **options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def convert(self, document, extension, *options):
        environment = os.environ | {"HOME": str(self.folder)}
        done = subprocess.run(
            ["soffice", "--headless", f"-env:UserInstallation=file://{self.folder}/profile",
             *options, "--convert-to", extension, "--outdir", str(self.folder), str(document)],
            capture_output=True, timeout=180, check=False, env=environment)
        result = self.folder / (document.stem + "." + extension)
        self.assertTrue(result.exists(), done.stdout + done.stderr)
        return result

    def stored(self, rtf):
        identifier = self.korvex("note", "--rtf", str(rtf)).decode().strip()
        return identifier, json.loads(self.korvex("show", identifier, "--as", "json"))

    def test_the_suite_opens_what_is_stored(self):
        identifier, _ = self.stored(DOCUMENTS / "week.rtf")
        written = self.folder / "written.rtf"
        written.write_bytes(self.korvex("show", identifier, "--as", "rtf"))
        document = OfficeDocument(self.convert(written, "fodt"))

        self.assertEqual(
            [text for text in document.texts() if text],
            ["Trip to Lisbon", "We land on Friday, für 3 Tage — 日本 😀.", "Passport", "and a copy",
             "Charger", "Check in", "Board", "Day", "Plan", "Friday", "Old town", "and river",
             "int main() {}", "See you there."])
        title = document.paragraph("Trip to Lisbon")
        self.assertEqual(title.get(name("text:outline-level")), "1")
        heading = document.properties(title)
        self.assertEqual(heading[name("fo:font-size")], "20pt")
        self.assertEqual(heading[name("fo:font-weight")], "bold")
        self.assertEqual(document.links(), {"Friday": "https://example.org/flight?id=7"})
        items = document.list_items()
        self.assertEqual([(depth, text) for depth, _, text in items],
                         [(1, "Passport"), (2, "and a copy"), (1, "Charger"),
                          (1, "Check in"), (1, "Board")])
        lists = {text: top for _, top, text in items}
        self.assertEqual(lists["Passport"], lists["Charger"])
        self.assertNotEqual(lists["Charger"], lists["Check in"])
        self.assertEqual(document.tables(), [[["Day", "Plan"], ["Friday", "Old town\nand river"]]])
        # What a cell's content is wide, and what its column is, differ by the padding.
        first, second = document.column_widths()
        self.assertAlmostEqual(second - first, 90, delta=2)
        for width, content in ((first, 90), (second, 180)):
            self.assertTrue(content - 1 <= width <= content + 20, width)

    def test_what_the_suite_wrote_is_read(self):
        rtf = self.convert(DOCUMENTS / "week.html", "rtf", "--infilter=HTML (StarWriter)")
        _, entry = self.stored(rtf)
        text = entry["text"]

        def run_of(words):
            at = len(text[:text.index(words)].encode("utf-16-le")) // 2
            return next(run["attributes"] for run in entry["runs"]
                        if run["location"] <= at < run["location"] + run["length"])

        def units(run):
            raw = text.encode("utf-16-le")
            end = run["location"] + run["length"]
            return raw[2 * run["location"]:2 * end].decode("utf-16-le").rstrip("\n")

        self.assertEqual(
            [line for line in text.split("\n") if line],
            ["Trip to Lisbon", "We land on Friday, early, für 3 Tage — 日本 😀.", "Packing",
             "Passport", "and a copy", "Charger", "Check in", "Board", "Day", "Plan", "Cost",
             "Friday", "Old town", "12", "Saturday", "Museum\u2028and river", "See you there."])
        self.assertTrue(run_of("land").get("bold"))
        self.assertFalse(run_of("We ").get("bold"))
        self.assertTrue(run_of("early").get("italic"))
        self.assertEqual(run_of("Friday")["link"], "https://example.org/flight?id=7")
        for heading, size in (("Trip to Lisbon", 20), ("Packing", 17)):
            self.assertEqual((run_of(heading)["size"], run_of(heading).get("bold")), (size, True))

        paragraphs = [(units(each), each["style"]) for each in entry["paragraphs"]]
        listed = {text: [each["list"] for each in style["lists"]]
                  for text, style in paragraphs if "lists" in style}
        self.assertEqual({text: len(lists) for text, lists in listed.items()},
                         {"Passport": 1, "and a copy": 2, "Charger": 1, "Check in": 1, "Board": 1})
        self.assertEqual(listed["Passport"], listed["Charger"])
        self.assertEqual(listed["and a copy"][0], listed["Passport"][0])
        self.assertEqual(listed["Check in"], listed["Board"])
        self.assertNotEqual(listed["Check in"], listed["Charger"])
        markers = {text: style["lists"][-1]["marker"] for text, style in paragraphs
                   if "lists" in style}
        self.assertEqual(markers["Check in"], "{decimal}.")
        self.assertNotIn("decimal", markers["Passport"])

        cells = [(text, style["cells"]) for text, style in paragraphs if "cells" in style]
        self.assertEqual({each[0]["table"] for _, each in cells}, {0})
        self.assertEqual([(each[0]["row"], each[0]["column"], text) for text, each in cells],
                         [(0, 0, "Day"), (0, 1, "Plan"), (0, 2, "Cost"),
                          (1, 0, "Friday"), (1, 1, "Old town"), (1, 2, "12"),
                          (2, 0, "Saturday"), (2, 1, "Museum\u2028and river"), (2, 2, "")])


if __name__ == "__main__":
    if not shutil.which("soffice"):
        print("skipped: no office suite is installed (./test --all installs one)")
        sys.exit(SKIPPED)
    unittest.main()
