// Elements of the document. Texts are set as text, never as HTML, because names come from files.

const byId = id => document.getElementById(id);

// Returns a new element. `properties` are its properties, except those with a "-" or "role", which
// are attributes.
function create(name, properties = {}, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(properties)) {
    if (key.includes("-") || key === "role") element.setAttribute(key, value);
    else element[key] = value;
  }
  element.append(...children);  // strings become text nodes
  return element;
}

function fillSelect(select, texts, values = texts.keys()) {
  select.replaceChildren();
  const list = [...values];
  texts.forEach((text, i) => select.append(create("option", {value: list[i], textContent: text})));
}

function showMessage(text) {
  const message = byId("message");
  message.textContent = text;
  message.hidden = !text;
}
