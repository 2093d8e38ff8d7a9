// Small helpers: elements, addresses, requests.

export const $ = (id) => document.getElementById(id);

// make("button", {type: "button", class: "x", onclick: f}, "text", child)
export function make(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith("on")) element.addEventListener(name.slice(2), value);
    else if (value === true) element.setAttribute(name, "");
    else if (value !== false && value != null) element.setAttribute(name, value);
  }
  element.append(...children.filter((child) => child != null));
  return element;
}

export function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

export function setAttribute(element, name, value) {
  if (element.getAttribute(name) !== String(value)) element.setAttribute(name, value);
}

// The token is in the address of the page when the program wants one: addresses that are handed on have it, too.
const token = new URLSearchParams(location.search).get("token");
export const address = (path) => (token ? `${path}${path.includes("?") ? "&" : "?"}token=${token}` : path);
export const api = (printer, path = "") => address(`/api/printers/${printer}${path}`);

// What is wrong with the request, or nothing.
export async function post(printer, what, body) {
  try {
    const response = await fetch(api(printer, `/${what}`), { method: "POST", body });
    return response.ok ? "" : (await response.json()).problem;
  } catch {
    return "the program does not answer";
  }
}
export const command = (printer, line) => post(printer, "command", line);

export const clock = (time) => new Date(time).toLocaleTimeString();
