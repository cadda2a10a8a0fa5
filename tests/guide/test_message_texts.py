#!/usr/bin/env python3
"""The search for messages finds them in every form in which the sources tell them, and misses no unlisted one."""
import unittest

from check_messages import missing_messages
from message_texts import fragments, messages_in


def found(source, name="room/file.cpp"):
    return list(messages_in(source, name))


class MessageTexts(unittest.TestCase):
    def test_text_of_a_raised_error_with_its_unknown_parts(self):
        self.assertEqual(found('Raise(kNo, "The field \\"" + name + "\\" is gone");'), ['The field "..." is gone'])

    def test_box_without_its_title(self):
        self.assertEqual(found('messages.Show({.Text = "Please add a track", .Title = "Status"});'), ["Please add a track"])

    def test_texts_on_neighbouring_lines_are_one(self):
        self.assertEqual(found('throw WrongCall("give the cell size "\n  "by --cell-size");'),
                         ["give the cell size by --cell-size"])

    def test_placeholders_are_unknown_parts(self):
        self.assertEqual(fragments(found('WrongCall(fmt::format("{}: {} is no number", a, b));')[0]), ["is no number"])

    def test_sentence_that_is_returned(self):
        self.assertEqual(found('return "Error: the buffer is missing.";'), ["Error: the buffer is missing"])

    def test_comments_and_options_are_no_messages(self):
        self.assertEqual(found('// Raise(kNo, "never said");\nadd_option("--x", o, "A thing that could not be less.");'), [])

    def test_unlisted_message_is_missing(self):
        messages = [("a.cpp", "The field ... is gone"), ("b.cpp", "Nobody knows this")]
        self.assertEqual(missing_messages(messages, "| The field … is gone | why | what |"), [("b.cpp", "Nobody knows this")])

    def test_parts_must_stand_in_one_row(self):
        self.assertTrue(missing_messages([("a.cpp", "The field ... is gone")], "| The field |\n| is gone |"))


if __name__ == "__main__":
    unittest.main()
