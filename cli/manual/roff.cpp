// cli/manual/roff.cpp - manual pages.
// SPDX-License-Identifier: MIT
//
// Text goes out as lines with font escapes, never as arguments of macros, which have quoting rules of their own.

#include "manual/table.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <map>

namespace kapris_cli
{

// Hyphens, quotes and tildes as typed, not as typography would have them; a line that begins with a dot is a request.
static std::string Escape(const std::string &text)
{
  static const std::map<char, std::string> escapes = {{'\\', "\\e"},  {'-', "\\-"},   {'\'', "\\(aq"},
                                                      {'`', "\\(ga"}, {'^', "\\(ha"}, {'~', "\\(ti"}};
  std::string escaped = text.starts_with('.') ? "\\&" : "";

  for (const char c : text)
    escaped += escapes.contains(c) ? escapes.at(c) : std::string(1, c);
  return escaped;
}

static std::string Bold(const std::string &text)
{
  return "\\fB" + Escape(text) + "\\fR";
}

static std::string Italic(const std::string &text)
{
  return "\\fI" + Escape(text) + "\\fR";
}

static std::string Upper(std::string text)
{
  for (char &c : text)
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

static std::string Sentence(const std::string &text)
{
  return text.empty() || text.ends_with('.') || text.ends_with(':') ? text : text + ".";
}

static std::string Tagged(const std::string &term, const std::string &text)
{
  return ".TP\n" + term + "\n" + Escape(text) + "\n";
}

// One form of an option, or the argument.
static std::string Form(const Item &item, const std::string &name)
{
  const std::string more = item.many ? " ..." : "";

  if (item.names.empty())
    return Italic(item.argument) + more;
  if (item.value.empty())
    return Bold(name);
  return fmt::format(fmt::runtime(item.optional ? "{}[={}]{}" : "{} {}{}"), Bold(name), Italic(item.value),
                     more);
}

// What must be given before what may be, arguments before options.
static std::string Synopsis(const Command &command)
{
  std::vector<Item> items = command.items;
  std::stable_sort(items.begin(), items.end(), [](const Item &a, const Item &b) {
    return std::pair(!a.required, !a.names.empty()) < std::pair(!b.required, !b.names.empty());
  });
  std::string line = Bold(command.name);

  for (const Item &item : items)
    line += fmt::format(fmt::runtime(item.required ? " {}" : " [{}]"),
                        Form(item, item.names.empty() ? "" : item.names[0]));
  return line + (command.verbs.empty() ? "" : " \\fICOMMAND\\fR [\\fIARGUMENT\\fR ...]") + "\n";
}

static std::string Term(const Item &item)
{
  if (item.names.empty() && !item.choices.empty())
    return fmt::format("{} {}", Form(item, ""), Italic(item.value));
  if (item.names.empty())
    return Form(item, "");
  std::vector<std::string> forms;
  for (const std::string &name : item.names)
    forms.push_back(Form(item, name));
  return fmt::format("{}", fmt::join(forms, ", "));
}

static std::string Options(const Command &command)
{
  std::string page = ".SH OPTIONS\n";
  std::string group = "Options";

  for (const Item &item : command.items) {
    if (!item.names.empty() && item.group != group) {
      group = item.group;
      page += ".SS " + Escape(group) + "\n";
    }
    page += Tagged(Term(item), Sentence(item.text) + (item.required ? " Required." : "") +
                                   (item.standard.empty() ? "" : " Default: " + item.standard + "."));
  }
  return page;
}

// The first paragraph follows its heading without a request.
static std::string Paragraphs(const Section &section)
{
  std::string page;

  for (const Paragraph &paragraph : section.paragraphs) {
    if (!paragraph.term.empty() && !paragraph.text.empty())
      page += Tagged(Bold(paragraph.term), paragraph.text);
    else
      page += (page.empty() ? "" : ".PP\n") +
              (paragraph.term.empty() ? Escape(Sentence(paragraph.text)) : Bold(paragraph.term)) + "\n";
  }
  return page;
}

static std::string Titled(const std::string &title, const std::vector<Paragraph> &paragraphs)
{
  return paragraphs.empty() ? "" : ".SH " + Escape(Upper(title)) + "\n" + Paragraphs({title, paragraphs});
}

static std::vector<Paragraph> FindParagraphs(const Command &command, const std::string &title)
{
  for (const Section &section : command.sections)
    if (section.title == title)
      return section.paragraphs;
  return {};
}

static const char examples[] = "Examples";
static const char exit_status[] = "Exit status";

// What a verb leaves to the page of the whole command: its exit statuses, and examples of the verb.
static std::string Closing(const Command &root, const Command &command)
{
  std::vector<Paragraph> shown = FindParagraphs(command, examples);
  std::vector<Paragraph> statuses = FindParagraphs(command, exit_status);

  if (shown.empty())
    for (const Paragraph &paragraph : FindParagraphs(root, examples))
      if (paragraph.term.starts_with(command.name + " "))
        shown.push_back(paragraph);
  if (statuses.empty())
    statuses = FindParagraphs(root, exit_status);
  return Titled(examples, shown) + Titled(exit_status, statuses);
}

static std::string PageName(const Command &command)
{
  std::string name = command.name;
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

static std::string Reference(const Command &command)
{
  return Bold(PageName(command)) + "(1)";
}

static std::string SeeAlso(const Command *parent, const Command &command)
{
  std::vector<std::string> pages;

  if (parent != nullptr) {
    pages.push_back(Reference(*parent));
    for (const Command &sibling : parent->verbs)
      if (sibling.name != command.name)
        pages.push_back(Reference(sibling));
  }
  for (const Command &verb : command.verbs)
    pages.push_back(Reference(verb));
  return pages.empty() ? "" : fmt::format(".SH SEE ALSO\n{}\n", fmt::join(pages, ",\n"));
}

std::string ManualPage(const Command &root, const Command *parent, const Command &command,
                       const std::string &version, const std::string &date)
{
  std::string summary = command.summary;
  summary[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(summary[0])));
  std::string page = fmt::format(
      ".TH {} 1 \"{}\" \"{}\"\n.ad l\n.nh\n.SH NAME\n{} \\- {}\n.SH SYNOPSIS\n{}.SH DESCRIPTION\n{}",
      Escape(Upper(PageName(command))), date, version, Escape(PageName(command)), Escape(summary),
      Synopsis(command), Paragraphs(command.sections[0]));

  if (!command.verbs.empty())
    page += ".SH COMMANDS\n";
  for (const Command &verb : command.verbs)
    page += Tagged(Reference(verb), Sentence(verb.summary));
  page += Options(command);
  for (const Section &section : command.sections)
    if (!section.title.empty() && section.title != examples && section.title != exit_status)
      page += Titled(section.title, section.paragraphs);
  return page + Closing(root, command) + SeeAlso(parent, command);
}

} // namespace kapris_cli
