#!/usr/bin/env python3
"""usage: filter.py HEADER

What Doxygen is given to read for a header: the words that declare attributes, spelt out as the
members that they make, each with its documentation; and what the names of the house mean, at the
declarations that say nothing of their own. One line stays one line.

The text of an attribute is that of the header, behind it (///<) or above it (///). An attribute
without one is left without one, so that Doxygen names it.
"""
import re
import sys

# The words: what each declares. {d} is the attribute's own text, {x} its name.
ID = "/** The id of {x}: what its notifications carry. */ static constexpr Kel::Attr<{key}> {x}Attr;"
WORDS = {
    "KEL_CONST": ["{d} const {T}& {x}() const noexcept;"],
    "KEL_ATTR": [
        "{d} const {T}& {x}() const noexcept;",
        "/** Writes {x} and notifies, also when the value is equal. */ void {x}Is(const {T}& value);",
    ],
    "KEL_SET": [
        "{d} const Kel::Set<{T}>& {x}() const noexcept;",
        "/** Whether `key` is in {x}. */ bool {x}(const {T}& key) const noexcept;",
        "/** Inserts into {x} and notifies; nothing when it is there. */ void {x}Is(const {T}& key);",
        "/** Deletes from {x} and notifies; nothing when it is absent. */ void {x}Del(const {T}& key);",
        "/** Empties {x}, with a notification for each key. */ void {x}DelAll();",
    ],
    "KEL_MAP": [
        "{d} const Kel::ValueMap<{T}, {V}>& {x}() const noexcept;",
        "/** What {x} has for `key`; a default value when it has none. */ {V} {x}(const {T}& key) const;",
        "/** Writes the value for `key` and notifies, also when it is equal. */ void {x}Is(const {T}& key, const {V}& value);",
        "/** Deletes `key` and its value and notifies; nothing when it is absent. */ void {x}Del(const {T}& key);",
        "/** Empties {x}, with a notification for each key. */ void {x}DelAll();",
    ],
    "KEL_ENTRY": [
        "{d} const Collection& {x}() const noexcept;",
        "/** The entry of {x} with this key; null when absent. */ Brix::Ptr<{T}> {x}(const Key& key);",
        "/** @copydoc {x}(const Key&) */ Brix::Ptr<const {T}> {x}(const Key& key) const;",
        "/** The entry with this key; one that is absent is created, which notifies. */ Brix::Ptr<{T}> {x}Is(const Key& key);",
        "/** Deletes the entry and notifies; nothing when it is absent. */ void {x}Del(const Key& key);",
        "/** Deletes all entries of {x}, with a notification for each. */ void {x}DelAll();",
    ],
    "KEL_SINGLE": [
        "{d} const Brix::Ptr<{T}>& {x}() noexcept;",
        "/** What {x} is; null when absent. */ Brix::Ptr<const {T}> {x}() const noexcept;",
        "/** What {x} is; when absent it is created, which notifies. */ Brix::Ptr<{T}> {x}Is();",
        "/** Deletes {x} and notifies; nothing when it is absent. */ void {x}Del();",
    ],
    "SM_INPUT": ["{d} const Brix::Ptr<{T}>& {x}() const noexcept;"],
    "SM_CHILDREN": [
        "{d} const Collection& {x}() const noexcept;",
        "/** The child of {x} with this key; null when absent. */ Brix::Ptr<{T}> {x}(const Key& key) const;",
    ],
    "SM_CHILD": ["{d} const Brix::Ptr<{T}>& {x}() const noexcept;"],
}
WORD = re.compile(rf"^  ({'|'.join(WORDS)})\((\d+), (.*)\)\s*(?:///< (.*))?$")

# The attributes of state machines, which have the same names in all ten.
ATTRIBUTES = [
    (r"SM_INPUT \w+V1", "The version-1 entity that is watched."),
    (r"SM_INPUT policyList", "The monitor's record of the device, of which names and inspection are watched."),
    (r"KEL_CONST \w+V2", "The version-2 entity that is written."),
    (r"KEL_CONST vpmStatus", "The monitor's records, which are looked up and not watched."),
    (r"KEL_CONST cookie", "The mark that a burst has changed version 2, shared by all below one VRF; may be null."),
    (r"KEL_CONST initialized", "True from the first walk to cleanup()."),
    (r"KEL_CONST initComplete", "Whether the first walk has ended."),
    (r"KEL_CONST netVrfName", "The name of the VRF in the network: the key in version 2."),
    (r"KEL_CONST (deviceName|vrfName|priority|policyName|l3IntfAddr)", "The key in version 1, which is that in the owner's children too."),
    (r"SM_CHILD(REN)? \w+Sm", "The machines below, one for each entry that is translated."),
]
KEY = "The key in the collection above; fixed."


def ownText(word, number, name):
    """What an attribute says that has no text of its own."""
    for pattern, text in ATTRIBUTES:
        if int(number) < 200 and re.fullmatch(pattern, f"{word} {name}"):
            return text
    return KEY if word == "KEL_CONST" and number == "256" else ""


def spelt(word, arguments, text):
    """The declarations that `word` stands for."""
    parts = re.split(r", (?![^<]*>)", arguments)
    name, values = parts[0], {"d": f"/** {text} */" if text else "", "x": parts[0]}
    if word == "KEL_MAP":
        values.update(T=parts[2], V=parts[4], key=parts[2])
    elif word in ("KEL_ENTRY", "SM_CHILDREN"):
        values.update(T=parts[2], key="Key")
    else:
        values.update(T=parts[1], key=parts[1] if word == "KEL_SET" else "void")
    return "  " + " ".join(line.format(**values) for line in [*WORDS[word], ID])


# The names of the house and of the language: what a declaration of this form means wherever it is.
NAMES = [
    (r"const char\* kelTypeName\(\)", "The name of the type in descriptors and messages."),
    (r"std::array<std::string_view, \d+> kelOperations", "The operations that the descriptor names."),
    (r"std::array<Kel::AttrId, \d+> kelPublished", "The attributes whose changes are told to notifiees."),
    (r"bool kDispatchIsNoexcept", "Whether an exception that leaves a handler ends the process; else it reaches the writer of version 1."),
    (r"(Kel::)?FwkType fwkType\(\) const noexcept override", "The descriptor of the type."),
    (r"void hasNotificationActiveIs\(bool on\) noexcept override", "Switches the inputs, then the children. What changes while they are off is not made up for."),
    (r"Brix::Publisher notifieeList\(\) const noexcept override", "What old-style notifiees register with."),
    (r"bool builtFrom\(", "Whether it was made of just these; if not, its owner replaces it or raises."),
    (r"[\w:<>]+ \w+SmDel\(", "Ends the child and hands it out; null when there is none. It is destroyed when nobody holds it."),
    (r"void \w+SmDelAll\(\)", "Ends all children."),
    (r"void handleInitialized\(\)", "The first walk: mirrors all that there is below the watched entity."),
    (r"void handle\w+\([\w]", "Brings version 2 in step with what version 1 has under this key: creates it there or deletes it."),
    (r"void handle\w+\(\)", "Brings version 2 in step with all of the attribute: deletes what version 1 has not, then does for each key what the keyed handler does."),
    (r"void doUpdate\(\)", "Stamps version 2 with the current time if a change was marked since the last stamp."),
    (r"void cleanup\(\)", "Ends all children and empties what they have written; notifications do nothing until handleInitialized()."),
    (r"void (initialized|initComplete)Is\(", "Stores and publishes a value that differs; an equal one is nothing."),
    (r"Brix::Ptr<\w+> \w+(SmIs|CookieIs)\($|Brix::Ptr<(\w+)> \w+(SmIs|CookieIs)\((\)|const|VelaL3::)", "Makes one, which mirrors what is there, and switches its notifications on. Raises what the first walk raises."),
    (r"Brix::Ptr<(?P<c>\w+)> (?P=c)Is\(", "Makes an empty one that is in no collection, with notification switched on."),
    (r"\w+Sm\(", "Registers with what it watches and runs the first walk; to be called by the creator alone."),
    (r"\w+Config\((const [\w:]+&|VelaPriority) \w+\)|DevicePolicyList\(", "With its key; to be called by the collection that it is in."),
    (r"~\w+\(\)", "Ends it: switches off, unregisters and releases what it holds."),
    (r"std::ostream& operator<<\(", "Prints the text form."),
    (r"std::string stringValue\(\) const|(const )?(Brix::|Kel::)?String&? stringValue\(\) const", "The text form."),
    (r"void kelAppend\(", "Appends the text form."),
    (r"bool kelParse\(", "Reads the text form. On bad text returns false, says in `why` what was found and what was expected, and leaves `value` as it was."),
    (r"([\w:]+|auto|const Same&) to(V1|V2|VelaL3V1\w+|VelaL3V2\w+)\(", "The same in the other generation."),
    (r"const ValueType& valueTypeOf<\w", "The descriptor of this type."),
    (r"auto kelNames\(", "The names of the enumerators, in their order."),
    (r"bool (operator(==|<)|isEq)\(|(std::strong_ordering|auto) operator<=>\(", "By value."),
    (r"std::(size_t|uint32_t) hash\(\) const", "A hash of the value, good in all 32 bits; not stable between versions."),
    (r"operator bool\(\) const", "Whether it is not null or empty."),
    (r"operator std::string_view\(\) const|std::string_view view\(\) const", "Its bytes; good as long as it lives."),
    (r"using (value_type|element_type) =", "What it holds."),
    (r"using (reference|pointer|difference_type|iterator_category|KeyResult) =", "As the standard library asks for it."),
    (r"using Key =", "The type of the keys."),
    (r"using (const_)?iterator =", "Good whatever is inserted and deleted meanwhile."),
    (r"(Iterator|iterator|const_iterator|auto|typename Map::Iterator) (begin|end)\(\) const", "A walk that survives every change: what is deleted before its turn is passed over, nothing comes twice."),
    (r"[\w:]+& operator\+\+\(\)|Iterator operator\+\+\(int\)|void operator\+\+\(int\)", "Goes on to the next that is still there."),
    (r"[\w:<> ]+[&*]? operator(\*|->)\(\) const", "What it points to."),
    (r"std::size_t size\(\) const", "How many there are."),
    (r"bool empty\(\) const", "Whether there is none."),
    (r"std::size_t heapBytes\(\) const", "The memory that it holds besides its own size."),
    (r"void clear\(\) noexcept", "Removes all."),
    (r"bool contains\(", "Whether it has `key`."),
    (r"void swap\((\w+)& ", "Exchanges what both hold."),
    (r"(?P<c>\w+)\(const (?P=c)&( \w*)?\)", "A copy."),
    (r"(?P<c>\w+)\((?P=c)&&( \w*)?\)", "Takes over what the other one holds."),
    (r"(\w+)& operator=\(", "Takes the value of the other one."),
    (r"void\* operator new\(|void operator delete\(", "Takes the block from, or gives it to, the slab of the type."),
]
MODIFIERS = r"(\[\[nodiscard\]\] |static |constexpr |explicit |friend |inline |virtual )*"
NAMES = [(re.compile(r"\s*" + MODIFIERS + f"({pattern})"), text) for pattern, text in NAMES]


def main():
    documented = left = False
    for line in open(sys.argv[1], encoding="utf-8"):
        line = line.rstrip("\n")
        comment = line.lstrip().startswith("///")
        word = WORD.match(line)
        line = re.sub(r"^namespace \[\[.*\]\] ", "namespace ", line)
        # What the standard library asks for is no part of the interface.
        left = line.startswith("struct std::hash<") or (left and line != "};")
        if left:
            line = ""
        elif word:
            text = word[4] or ("" if documented else ownText(word[1], word[2], word[3].split(",")[0]))
            line = spelt(word[1], word[3], text)
        elif not documented and "///<" not in line and "= delete" not in line:
            text = next((text for pattern, text in NAMES if pattern.match(line)), None)
            line = line if text is None else f"/** {text} */ {line}"
        documented = comment or (documented and line.lstrip().startswith(("template", "requires")))
        print(line)


main()
