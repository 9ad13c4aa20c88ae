const manifest = JSON.parse(document.getElementById("manifest").textContent);
document.getElementById("title").textContent = manifest.title;
