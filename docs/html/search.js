// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// The search of the documentation, in place of Doxygen's, which does not search the texts and which
// needs a server for this. The pages create a SearchBox; the form sends the words to search.html.
'use strict';

const LABEL = 'Search';

class SearchBox {
    DOMSearchField() {
        return document.getElementById('MSearchField');
    }

    OnSearchFieldFocus(isActive) {
        const field = this.DOMSearchField();
        if (isActive && field.value === LABEL)
            field.value = '';
        else if (!isActive && field.value === '')
            field.value = LABEL;
    }
}

function element(name, ...children) {
    const result = document.createElement(name);
    result.append(...children);
    return result;
}

// The text around the first of the words, with all of them marked.
function excerpt(text, pattern) {
    const start = text.lastIndexOf(' ', Math.max(0, text.search(pattern) - 80)) + 1;
    const pieces = text.slice(start, start + 240).split(pattern);
    const marked = pieces.map((piece, i) => (i % 2 ? element('mark', piece) : piece));
    return element('p', start ? '… ' : '', ...marked, start + 240 < text.length ? ' …' : '');
}

function result(section, pattern) {
    const link = element('a', [section.page, section.title].filter(Boolean).join(': '));
    link.href = section.url;
    return element('li', link, excerpt(section.text, pattern));
}

// The sections that contain all words, first those that have them in the title.
function find(words) {
    const count = text => words.filter(word => text.toLowerCase().includes(word)).length;
    return sections
        .filter(({ page, title, text }) => count(`${page} ${title} ${text}`) === words.length)
        .map(section => [2 * count(section.title) + count(section.page), section])
        .sort(([first], [second]) => second - first)
        .map(([, section]) => section);
}

function show(query) {
    const words = query.toLowerCase().split(/\s+/).filter(Boolean);
    const escaped = words.map(word => word.replace(/[^\w\s]/g, '\\$&'));
    const pattern = new RegExp(`(${escaped.join('|')})`, 'i');
    const found = words.length ? find(words) : [];
    const summary = found.length === 1 ? '1 section' : `${found.length} sections`;
    document.getElementById('searchresults').replaceChildren(
        element('p', words.length ? `${summary} with “${query}”` : 'Enter one or more words.'),
        element('ol', ...found.map(section => result(section, pattern))));
}

const query = new URLSearchParams(location.search).get('query');
if (query !== null) {
    window.addEventListener('load', () => show(query));
    document.addEventListener('input', ({ target }) => {
        if (target.id === 'MSearchField')
            show(target.value);
    });
}
